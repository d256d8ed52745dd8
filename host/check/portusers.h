#pragma once

#include <QString>
#include <QStringList>

/// The programs besides this one that have a device open, as "ups-host (4711)": two that ask on one line
/// spoil each other's answers. Empty as well when this user may not look into them.
QStringList otherUsersOf(const QString& device);
