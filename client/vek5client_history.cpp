#include "vek5client.h"

#include "historylog.h"

#include <QFile>
#include <QTextStream>
#include <QtDebug>

namespace {

// Fixed and relative to the working directory: the driver writes the one, the host installs the other.
const char* const historyFile = "./history.txt";
const char* const codeMapFile = "./PVMX/drovaPanel/db/historycodemap.csv";

// What could not be done to a file, as a debug line: the export has no other way to tell.
void reportFile(const char* what, const QFile& file)
{
    qDebug("history: cannot %s %s: %s", what, qUtf8Printable(file.fileName()),
           qUtf8Printable(file.errorString()));
}

} // namespace

void vek5Client::initHistoryInfo()
{
    m_historyState = {{1, tr("Appear")}, {0, tr("Disappear")}};
    m_historyCode.clear();
    QFile file(QString::fromLatin1(codeMapFile));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QTextStream stream(&file);
    stream.setCodec("system"); // no codec has this name here, so the locale's stays: what the file is in
    // The language code is still empty here, as this runs before the configuration is read. Deliberate: the
    // second language wins wherever the file has it.
    while (!stream.atEnd())
        historylog::takeCodeLine(stream.readLine(), m_languageCode, m_historyCode);
}

QStringList vek5Client::takeHistoryRows()
{
    QStringList rows;
    QFile file(QString::fromLatin1(historyFile));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        while (!file.atEnd()) {
            const QString row = historylog::rowOf(file.readLine(), m_historyCode, m_historyState);
            if (!row.isNull())
                rows << row;
        }
        file.close();
    }
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        reportFile("empty", file);
    return rows;
}

void vek5Client::exportHistoryInfo(QString path)
{
    // The history is emptied before the path is looked at: deliberate, a host that passes no name clears it.
    const QStringList rows = takeHistoryRows();
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        reportFile("write", file);
        return;
    }
    QTextStream stream(&file);
    stream << tr("ID") << ',' << tr("Content") << ',' << tr("Status") << ',' << tr("Time") << ",\n";
    for (const QString& row : rows)
        stream << row;
    stream.flush();
    if (stream.status() != QTextStream::Ok || !file.flush())
        reportFile("write", file);
}
