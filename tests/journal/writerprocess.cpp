// Writes numbered events into a journal until it is killed: FILE FIRST_NUMBER. Says each number, and the
// time, once the journal has it.

#include "journal.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QThread>

#include <cstdio>

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    const QString unit = QStringLiteral("A");
    Journal journal({app.arguments().at(1), {}, 0},
                    [](const QString& line) { std::fprintf(stderr, "%s\n", qPrintable(line)); });
    journal.beginPeriod(unit, QDateTime::currentMSecsSinceEpoch());
    for (int number = app.arguments().at(2).toInt();; ++number) {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        journal.append(JournalEvent{now, unit, 2006, number, QStringLiteral("Fan"), 1, "{}"});
        std::printf("%d %lld\n", number, static_cast<long long>(now));
        std::fflush(stdout);
        QThread::usleep(200);
    }
}
