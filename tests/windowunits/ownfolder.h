#pragma once

#include <QApplication>
#include <QtTest>

/// Host and plugin find their configuration beside the running program: a test of them is a program in a
/// folder of its own.
namespace ownfolder {

/// Starts the program once more, as a copy in such a folder, and does not return; the copy goes on with that
/// folder as its working directory. Before the application object is made.
void moveThere(char* argv[]);
/// Removes the copy's folder, which the rest of the program may not need any more.
void remove();

/// The whole main() of a test.
template <typename Test>
int run(int argc, char* argv[])
{
    moveThere(argv);
    int failures = 0;
    {
        const QApplication application(argc, argv);
        Test test;
        failures = QTest::qExec(&test, argc, argv);
    }
    remove();
    return failures;
}

} // namespace ownfolder
