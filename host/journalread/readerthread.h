#pragma once

#include <QThread>

#include <memory>
#include <utility>

/// A reader in a thread of its own, with an event loop. The end of this object ends both and waits, which
/// takes as long as the reader's present step: readers work in short ones.
template <typename Reader>
class ReaderThread
{
public:
    template <typename... Args>
    explicit ReaderThread(Args&&... args)
        : m_reader(new Reader(std::forward<Args>(args)...))
    {
        m_reader->moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::finished, m_reader, &QObject::deleteLater);
    }
    ~ReaderThread()
    {
        m_reader->cancel();
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY(ReaderThread)

    /// Must be called once. The name is that of the thread.
    void start(const QString& name)
    {
        m_thread.setObjectName(name);
        m_thread.start();
    }
    /// Connect to it; it lives on the thread.
    Reader* reader() const { return m_reader; }

private:
    QThread m_thread;
    Reader* const m_reader; // deletes itself when the thread ends
};
