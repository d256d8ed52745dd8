#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// Writes whole lines to a descriptor, each at once, so that a reader at the other end of a pipe sees it
/// when it happens. SIGPIPE must be ignored.
class LineOutput
{
public:
    /// Asked many times a second while a reader does not read; true gives the output up.
    using GiveUp = std::function<bool()>;

    /// The descriptor stays the caller's.
    explicit LineOutput(
        int descriptor, GiveUp giveUp = [] { return false; })
        : m_descriptor(descriptor)
        , m_giveUp(std::move(giveUp))
    {}

    /// Writes line and its end; does nothing once a write has failed.
    void write(const QByteArray& line);

    /// False once a write has failed.
    bool isOpen() const { return m_error == 0; }
    /// True when the reader closed its end: an ordinary way to stop listening.
    bool isClosedByReader() const;
    /// The system's text for the error that closed it.
    QString errorText() const;

private:
    bool waitForReader();

    int m_descriptor;
    GiveUp m_giveUp;
    int m_error = 0; // errno
};
