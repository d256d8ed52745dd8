#pragma once

#include "registerimage.h"
#include "settings.h"

#include <QFile>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace simulation {

/// Writes down what units truly did, as JSON lines, each flushed when it is complete; an existing file is
/// continued. Every line has "t" (Unix time in ms) and "address"; the rest tells its kind:
///
///     {"t":1730000000000,"address":1,"points":{"2021":1,"4163":230.1}}
///         points that changed, with the value that a reader of the registers gets; the first line of a unit
///         holds all points
///     {"t":...,"address":1,"buzzer":true}               the buzzer's state, at the start and on each change
///     {"t":...,"address":1,"command":17,"argument":null} a command that was carried out
///     {"t":...,"address":1,"settings":{"3017":32}}      settings that were written, as raw registers
///     {"t":...,"address":1,"rejected":{"function":6,"register":9,"exception":2}}
///     {"t":...,"address":1,"fault":"late 1500","function":4,"register":101}
///         a fault that met a request; an outage that began by itself has address 0 and no request
///     {"t":...,"address":1,"scenario":"mains off"}      an action of the scenario that begins
///
/// A line stands in the file before any reply can carry what it tells. Any thread may write.
class Trace
{
public:
    /// Opens the file for appending; null when that fails, with the system's reason in `error`.
    static std::unique_ptr<Trace> open(const QString& path, QString* error);

    /// The points in which `now` differs from `before`, or all without a `before`; nothing if none differs.
    void points(int address, const RegisterImage& now, const RegisterImage* before);
    void buzzer(int address, bool on);
    void command(int address, int code, std::uint16_t argument);
    void settings(int address, int firstRegister, const std::vector<std::uint16_t>& values);
    void scenario(int address, const QByteArray& action);
    void rejected(int address, int function, int firstRegister, Refusal refusal);
    void fault(int address, const QByteArray& text);
    void fault(int address, const QByteArray& text, int function, int firstRegister);

private:
    explicit Trace(const QString& path);
    void write(int address, const QByteArray& members);

    std::mutex m_mutex;
    QFile m_file;
    bool m_failed = false; ///< told already
};

} // namespace simulation
