#pragma once

// Modbus RTU <-> Modbus TCP, over bytes. An MBAP header is transaction id (2), protocol id (2), length of
// what follows (2), unit id (1), high byte first; an RTU frame is unit id, PDU, CRC (2, low byte first).

namespace reframing {
constexpr int BufferBytes = 1000;
constexpr int MaxRtuBytes = BufferBytes - 4; ///< + 6 of the header - 2 of the CRC
constexpr int MinAnswerBytes = 7;            ///< a whole MBAP header

/// Turns an RTU frame of rtuBytes (0 to MaxRtuBytes) into Modbus TCP at tcp, which holds BufferBytes. The CRC
/// is dropped unchecked; the ids are 0. Returns the bytes to send, rtuBytes + 4.
int rtuToTcp(const unsigned char* rtu, int rtuBytes, unsigned char* tcp);

/// Turns a Modbus TCP answer of tcpBytes (MinAnswerBytes to BufferBytes) in its buffer of BufferBytes into an
/// RTU frame there, with its CRC. The header is dropped unread. Returns the frame's length, tcpBytes - 4.
int tcpToRtu(unsigned char* buffer, int tcpBytes);
} // namespace reframing
