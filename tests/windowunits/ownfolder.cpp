#include "ownfolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {
constexpr const char* folderVariable = "OWN_FOLDER";
}

void ownfolder::moveThere(char* argv[])
{
    if (qEnvironmentVariableIsSet(folderVariable)) {
        QDir::setCurrent(qEnvironmentVariable(folderVariable));
        return;
    }
    QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/tst_window-XXXXXX"));
    folder.setAutoRemove(false);
    QDir(folder.path()).mkpath(QStringLiteral("PVMX/drovaPanel/db"));
    const QByteArray copy = QFile::encodeName(folder.filePath(QStringLiteral("test")));
    QFile::copy(QStringLiteral("/proc/self/exe"), QFile::decodeName(copy));
    qputenv(folderVariable, QFile::encodeName(folder.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.filePath(QStringLiteral("config"))));
    argv[0] = const_cast<char*>(copy.constData());
    ::execv(copy.constData(), argv);
    std::perror("no copy of the test");
    std::exit(1);
}

void ownfolder::remove()
{
    QDir(qEnvironmentVariable(folderVariable)).removeRecursively();
}
