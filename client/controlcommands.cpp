#include "controlcommands.h"

#include "controltable.h"

#include <algorithm>
#include <iterator>

namespace controlcommands {

namespace {

const Row* rowOf(int id)
{
    const Row* row =
        std::find_if(std::begin(rows), std::end(rows), [id](const Row& r) { return r.id == id; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

std::optional<QByteArray> driverText(const ControlCmd& command)
{
    // The argument is only ever copied, never used as a format: it comes from a person.
    const QByteArray argument = command.value.toLocal8Bit();
    if (command.id == RawText)
        return argument.left(maxTextLength);
    const Row* row = rowOf(command.id);
    if (!row)
        return std::nullopt;
    return QByteArray(QByteArray::number(row->driverCode) + ',' + argument).left(maxTextLength);
}

const char* nameOf(int id)
{
    const Row* row = rowOf(id);
    return row ? row->name : "";
}

} // namespace controlcommands
