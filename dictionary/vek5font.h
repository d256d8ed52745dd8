#pragma once

#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <atomic>

/// The plugin's dictionary: data-log headings and state texts, and the event catalogue.
///
/// One object for the process, made on first use and never deleted. Its texts are translated once, when it
/// is made: a host installs its translator before. Any thread may read it.
class vek5Font : public QObject
{
    Q_OBJECT

public:
    /// The dictionary; made by the first caller, whichever thread that is.
    static vek5Font* instance();

    explicit vek5Font(QObject* parent = nullptr);

    /// The 15 headings of a data-log row, in the order of changeLogData.
    QStringList getDataLogDesc();
    /// One data-log row, 15 texts, made from a data map. Missing points read as 0.
    QStringList changeLogData(QMap<int, QVariant> data);
    /// All 996 event texts by event code, empty for reserved codes.
    QStringList getEventLogDesc();
    /// Keeps a data map. Nothing reads it; hosts built against the operation still call it. Not guarded.
    void flushData(QMap<int, QVariant> data);

private:
    static std::atomic<vek5Font*> m_instance;

    QStringList m_dataLogDesc;
    QVector<QString> m_batteryState;
    QVector<QString> m_outputMode;
    QStringList m_eventLogDesc;
    QMap<int, QVariant> m_data;
};
