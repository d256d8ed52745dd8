#pragma once

#include "journalexport.h"

#include <QThread>

/// Writes the events of a journal to a file on a thread of its own. Must have finished before it is deleted.
class ExportJob : public QThread
{
    Q_OBJECT

public:
    explicit ExportJob(const ExportRequest& request, QObject* parent = nullptr);

    const QString& targetFile() const { return m_request.targetFile; }
    /// What went wrong in one line, or an empty text; once it has finished.
    const QString& error() const { return m_error; }

protected:
    void run() override { m_error = journalexport::writeEvents(m_request); }

private:
    const ExportRequest m_request;
    QString m_error;
};
