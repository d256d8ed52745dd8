#pragma once

// Modbus RTU frame helpers, exported by the plugin under these plain names for the driver library. All are
// pure apart from writing the caller's buffer and may be called from any thread; none checks how large the
// buffer is. Registers and counts go into a frame with their low 16 bits, high byte first.

#if defined(__GNUC__)
#define VEK5_DRIVER_API __attribute__((visibility("default")))
#else
#define VEK5_DRIVER_API
#endif

extern "C" {

/// Stores the CRC of the first length - 2 bytes in the last two, low-order byte first.
/// Returns 0; -1 for a null frame or a length under 4, which changes nothing.
VEK5_DRIVER_API int setModbusCRC(unsigned char* frame, int length);

/// 0 when the last two bytes are the CRC of those before; -1 when not, for a null frame or a length under 4.
// Spelt so on purpose: the driver library finds it by this name.
VEK5_DRIVER_API int checkModbufCRC(const unsigned char* frame, int length);

/// Builds an 8-byte request to write one register (function 6).
/// Returns 0, not the length (deliberate, drivers test for it); -1 for a null buffer.
VEK5_DRIVER_API int mod_Set_SetBuf(unsigned char* buffer, int address, int reg, int value);

/// Builds an 8-byte request and returns the length of the reply that it should draw: functions 3 and 4
/// count x 2 + 5, function 2 count / 8 + 5, function 6 8, any other 0; -1 for a null buffer.
VEK5_DRIVER_API int buildCmd(unsigned char* buffer, int address, int function, int start, int count);

/// Builds a request to write count registers (function 16); registers from suppliedCount on are zero. data
/// holds each value high byte first. Returns the frame length, count x 2 + 9; -1 for a null buffer.
VEK5_DRIVER_API int buildCmd16(unsigned char* buffer, int address, int start, int count, int suppliedCount,
                               const unsigned char* data);

/// The big-endian value of 2 bytes.
VEK5_DRIVER_API unsigned short UINT8_2_to_UINT16(const unsigned char* bytes);

/// The big-endian value of 4 bytes.
VEK5_DRIVER_API unsigned int UINT8_4_to_UINT32(const unsigned char* bytes);

/// The first character of a zero-terminated text that is not a blank (0x20 only); null for null.
VEK5_DRIVER_API char* FiltSpace(char* text);
}
