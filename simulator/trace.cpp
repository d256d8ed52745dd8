#include "trace.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace simulation {

namespace {

/// Registers carry at most five digits, so six significant ones give each value exactly as its decimal text.
QByteArray member(int point, double value)
{
    const QByteArray name = QByteArray::number(point);
    const QByteArray text = QByteArray::number(value, 'g', 6);
    return '"' + name + "\":" + text + ',';
}

QByteArray object(QByteArray members)
{
    members.chop(1);
    return '{' + members + '}';
}

template <typename Registers>
void appendChanged(QByteArray& members, int firstPoint, const RegisterImage& now, const Registers& registers,
                   const Registers* before)
{
    for (std::size_t i = 0; i < registers.size(); ++i) {
        const int point = firstPoint + static_cast<int>(i);
        if (!before || registers[i] != (*before)[i])
            members += member(point, now.value(point));
    }
}

} // namespace

std::unique_ptr<Trace> Trace::open(const QString& path, QString* error)
{
    std::unique_ptr<Trace> trace(new Trace(path));
    if (trace->m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return trace;
    *error = trace->m_file.errorString();
    return nullptr;
}

Trace::Trace(const QString& path)
    : m_file(path)
{}

void Trace::points(int address, const RegisterImage& now, const RegisterImage* before)
{
    QByteArray members;
    appendChanged(members, 2000, now, now.alarms, before ? &before->alarms : nullptr);
    appendChanged(members, 3000, now, now.settings, before ? &before->settings : nullptr);
    appendChanged(members, 4000, now, now.inputs, before ? &before->inputs : nullptr);
    if (!members.isEmpty())
        write(address, "\"points\":" + object(members));
}

void Trace::buzzer(int address, bool on)
{
    write(address, on ? QByteArrayLiteral("\"buzzer\":true") : QByteArrayLiteral("\"buzzer\":false"));
}

void Trace::command(int address, int code, std::uint16_t argument)
{
    const QByteArray text =
        argument == unitmap::noArgument ? QByteArrayLiteral("null") : QByteArray::number(argument);
    write(address, "\"command\":" + QByteArray::number(code) + ",\"argument\":" + text);
}

void Trace::settings(int address, int firstRegister, const std::vector<std::uint16_t>& values)
{
    QByteArray members;
    int point = 3000 + firstRegister;
    for (std::uint16_t raw : values)
        members += member(point++, raw);
    write(address, "\"settings\":" + object(members));
}

void Trace::rejected(int address, int function, int firstRegister, Refusal refusal)
{
    const QByteArray members = QByteArray("\"function\":" + QByteArray::number(function) +
                                          ",\"register\":" + QByteArray::number(firstRegister) +
                                          ",\"exception\":" + QByteArray::number(int(refusal)) + ',');
    write(address, "\"rejected\":" + object(members));
}

void Trace::fault(int address, const QByteArray& text)
{
    write(address, "\"fault\":\"" + text + '"');
}

void Trace::fault(int address, const QByteArray& text, int function, int firstRegister)
{
    write(address, "\"fault\":\"" + text + "\",\"function\":" + QByteArray::number(function) +
                       ",\"register\":" + QByteArray::number(firstRegister));
}

void Trace::scenario(int address, const QByteArray& action)
{
    // The text comes from a file and may hold anything.
    const QJsonObject object{{QStringLiteral("scenario"), QString::fromUtf8(action)}};
    const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    write(address, json.mid(1, json.size() - 2));
}

void Trace::write(int address, const QByteArray& members)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const QByteArray line = "{\"t\":" + QByteArray::number(QDateTime::currentMSecsSinceEpoch()) +
                            ",\"address\":" + QByteArray::number(address) + ',' + members + "}\n";
    const bool written = m_file.write(line) == line.size() && m_file.flush();
    if (!written && !m_failed) {
        // Said once: the units go on, and a line a step would bury the reason.
        std::fprintf(stderr, "ups-sim: the trace %s is incomplete from now on: %s\n",
                     qPrintable(m_file.fileName()), qPrintable(m_file.errorString()));
    }
    m_failed = m_failed || !written;
}

} // namespace simulation
