#pragma once

#include <QCoreApplication>
#include <QString>

#include <array>

/// What becomes of a file: the text that it has and the one that it is to have.
struct FileChange
{
    QString file;
    QByteArray before; ///< empty for a file that does not exist
    QByteArray after;
};

/// Replaces two files or neither. A file system replaces one at a time, so:
///
///  1. "FIRST.new" and "SECOND.new" are written and synced, and may be looked at;
///  2. "SECOND.new" becomes "SECOND.ready";
///  3. "FIRST.new" becomes FIRST: from here on the change has happened;
///  4. "SECOND.ready" becomes SECOND.
///
/// After a crash or a power cut recover() finds out by the names that lie there how far it came, and goes
/// back (up to 2) or on to the end (from 3).
class PairedFiles
{
    Q_DECLARE_TR_FUNCTIONS(PairedFiles)

public:
    PairedFiles(const FileChange& first, const FileChange& second);
    /// Removes what was prepared and not committed.
    ~PairedFiles();
    Q_DISABLE_COPY(PairedFiles)

    /// Writes the new texts beside the files, making missing folders. False with error() when one cannot be
    /// written; nothing has changed then.
    bool prepare();
    /// The prepared file, or the file itself when it stays as it is.
    QString candidate(int index) const;
    /// Replaces the files. False with error() when that fails; the files are as they were then.
    bool commit();
    /// One line that names the file.
    QString error() const { return m_error; }

    /// Ends what a crash interrupted. The caller sees to it that nobody replaces these files meanwhile.
    static void recover(const QString& first, const QString& second);

private:
    struct Slot
    {
        FileChange change;
        QString target; ///< the file itself where the name is a symbolic link
        bool isChanged;
    };

    bool writeNew(const Slot& slot, const QByteArray& text);
    bool rename(const QString& from, const Slot& to);
    void restoreFirst();

    std::array<Slot, 2> m_slots;
    QString m_error;
};
