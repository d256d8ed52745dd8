#include "portaccess.h"

#include "reframing.h"

#include <QIODevice>

#include <cstring>

namespace {
// The hooks are protected; named through a derived class they may be called on any device.
struct Hooks : QIODevice
{
    using QIODevice::readData;
    using QIODevice::writeData;
};

constexpr int NoAnswer = -5;
constexpr int AnswerTimeoutMs = 1000;

QIODevice* deviceOf(const PortHandle* handle)
{
    return handle ? static_cast<QIODevice*>(handle->device) : nullptr;
}
} // namespace

int CommRead(PortHandle* handle, char* buffer, int length)
{
    QIODevice* device = deviceOf(handle);
    if (!device || !buffer)
        return -1;
    return static_cast<int>((device->*(&Hooks::readData))(buffer, length));
}

int CommWrite(PortHandle* handle, char* buffer, int length)
{
    QIODevice* device = deviceOf(handle);
    if (!device || !buffer)
        return -1;
    return static_cast<int>((device->*(&Hooks::writeData))(buffer, length));
}

int CommOpen()
{
    return 0;
}

void CommAccept() {}

void CommControl() {}

void CommClose() {}

int TcpCommRead(PortHandle* handle, char* buffer, int)
{
    QIODevice* device = deviceOf(handle);
    if (!device || !buffer || !device->isOpen())
        return NoAnswer;
    unsigned char frame[reframing::BufferBytes] = {};
    device->waitForReadyRead(AnswerTimeoutMs);
    const auto count = static_cast<int>(device->read(reinterpret_cast<char*>(frame), sizeof frame));
    if (count < reframing::MinAnswerBytes)
        return NoAnswer;
    const int rtuBytes = reframing::tcpToRtu(frame, count);
    std::memcpy(buffer, frame, static_cast<std::size_t>(rtuBytes));
    return rtuBytes;
}

int TcpCommWrite(PortHandle* handle, char* frame, int length)
{
    QIODevice* device = deviceOf(handle);
    if (!device || !frame || length < 0 || length > reframing::MaxRtuBytes)
        return -1;
    if (!device->isOpen())
        return -1; // as its write would, without a warning of Qt's for each try
    unsigned char bytes[reframing::BufferBytes];
    const int count = reframing::rtuToTcp(reinterpret_cast<const unsigned char*>(frame), length, bytes);
    return device->write(reinterpret_cast<const char*>(bytes), count) == count ? length : -1;
}
