#pragma once

#include <QString>
#include <QVector>

#include <optional>

/// One thing that was measured, and what it is held against.
struct Row
{
    QString measure; ///< the name it is run by, for example "tcp"
    QString what;
    QString unit;                    ///< of ours and peer; empty for a count
    double ours = 0;                 ///< a median
    std::optional<double> peer = {}; ///< the same of who or what it is compared with
    std::optional<double> bar = {};  ///< the most that the ratio may be or, without a peer, that ours may be
    QString note = {};               ///< who the peer is, or what makes up the bar

    std::optional<double> ratio() const;
    /// Nothing without a bar.
    std::optional<bool> isMet() const;
};

/// All rows of a run, and where and when it ran.
class Results
{
public:
    explicit Results(const QString& commit);

    /// Adds a row and prints it.
    void add(const Row& row);
    /// Prints where this runs, then the head of the table.
    void printHead() const;
    /// Whether every bar is met.
    bool areMet() const;
    /// False with a line on standard error when the file cannot be written.
    bool writeJson(const QString& file) const;

private:
    QString m_machine;
    QString m_date;
    QString m_commit;
    QString m_loadAtStart;
    QVector<Row> m_rows;
};
