#include "modbushelpers.h"

#include "crctables.h"

#include <climits>
#include <cstring>

namespace {
constexpr int CrcBytes = 2;
constexpr int MinFrameBytes = 4; // shorter ones cannot hold an address, a function and a CRC
constexpr int RequestBytes = 8;

struct Crc
{
    unsigned char first = 0xFF; // comes first in a frame
    unsigned char second = 0xFF;
};

Crc crcOf(const unsigned char* bytes, int count)
{
    Crc crc;
    for (int i = 0; i < count; ++i) {
        const unsigned index = crc.first ^ bytes[i];
        crc.first = auchCRCHi[index] ^ crc.second;
        crc.second = auchCRCLo[index];
    }
    return crc;
}

void putBigEndian(unsigned char* to, int value)
{
    to[0] = static_cast<unsigned char>(static_cast<unsigned>(value) >> 8);
    to[1] = static_cast<unsigned char>(value);
}

// Address, function and two 16-bit values: the head of all requests.
void putHead(unsigned char* buffer, int address, int function, int first, int second)
{
    buffer[0] = static_cast<unsigned char>(address);
    buffer[1] = static_cast<unsigned char>(function);
    putBigEndian(buffer + 2, first);
    putBigEndian(buffer + 4, second);
}

// In unsigned arithmetic, so that a senseless count wraps instead of being undefined.
int registerReplyBytes(int count)
{
    return static_cast<int>(static_cast<unsigned>(count) * 2 + 5);
}
} // namespace

int setModbusCRC(unsigned char* frame, int length)
{
    if (!frame || length < MinFrameBytes)
        return -1;
    const Crc crc = crcOf(frame, length - CrcBytes);
    frame[length - 2] = crc.first;
    frame[length - 1] = crc.second;
    return 0;
}

int checkModbufCRC(const unsigned char* frame, int length)
{
    if (!frame || length < MinFrameBytes)
        return -1;
    const Crc crc = crcOf(frame, length - CrcBytes);
    return frame[length - 2] == crc.first && frame[length - 1] == crc.second ? 0 : -1;
}

int mod_Set_SetBuf(unsigned char* buffer, int address, int reg, int value)
{
    if (!buffer)
        return -1;
    putHead(buffer, address, 6, reg, value);
    return setModbusCRC(buffer, RequestBytes);
}

int buildCmd(unsigned char* buffer, int address, int function, int start, int count)
{
    if (!buffer)
        return -1;
    putHead(buffer, address, function, start, count);
    setModbusCRC(buffer, RequestBytes);
    switch (function) {
    case 2:
        // One byte less than the reply has where count is no multiple of 8, and nothing for function 1:
        // deliberate, drivers know these numbers.
        return count / 8 + 5;
    case 3:
    case 4:
        return registerReplyBytes(count);
    case 6:
        return RequestBytes;
    default:
        return 0;
    }
}

int buildCmd16(unsigned char* buffer, int address, int start, int count, int suppliedCount,
               const unsigned char* data)
{
    constexpr int HeadBytes = 7;
    constexpr int MaxCount = (INT_MAX - HeadBytes - CrcBytes) / 2;
    // Without data the frame would write zeros that nobody asked for.
    if (!buffer || count > MaxCount || count < -MaxCount || (!data && suppliedCount > 0 && count > 0))
        return -1;
    putHead(buffer, address, 16, start, count);
    buffer[6] = static_cast<unsigned char>(count * 2);
    for (int i = 0; i < count; ++i) {
        if (i < suppliedCount)
            std::memcpy(buffer + HeadBytes + 2 * i, data + 2 * i, 2);
        else
            std::memset(buffer + HeadBytes + 2 * i, 0, 2);
    }
    const int length = count * 2 + HeadBytes + CrcBytes;
    return setModbusCRC(buffer, length) == 0 ? length : -1;
}

unsigned short UINT8_2_to_UINT16(const unsigned char* bytes)
{
    return bytes ? static_cast<unsigned short>(bytes[0] << 8 | bytes[1]) : 0;
}

unsigned int UINT8_4_to_UINT32(const unsigned char* bytes)
{
    if (!bytes)
        return 0;
    return static_cast<unsigned>(UINT8_2_to_UINT16(bytes)) << 16 | UINT8_2_to_UINT16(bytes + 2);
}

char* FiltSpace(char* text)
{
    while (text && *text == ' ')
        ++text;
    return text;
}
