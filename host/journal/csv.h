#pragma once

#include <QByteArray>
#include <QStringList>

namespace csv {

/// One line in UTF-8 with its end (a line feed). A field that holds a comma, a quote or a line end is put
/// in quotes, with its own quotes doubled. Pure function.
QByteArray line(const QStringList& fields);

} // namespace csv
