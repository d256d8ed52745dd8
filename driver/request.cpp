#include "request.h"

#include "modbushelpers.h"

#include <cstddef>

namespace driver {

namespace {

constexpr int shortFrameLength = 8; ///< requests to read, to write one register, and the replies to writes

} // namespace

Request readRequest(int address, const unitmap::Block& block)
{
    Request request;
    request.length = shortFrameLength;
    request.replyLength =
        buildCmd(request.frame.data(), address, block.function, block.firstRegister, block.count);
    return request;
}

Request writeRequest(int address, const RegisterWrite& write)
{
    Request request;
    request.length = shortFrameLength;
    request.replyLength = shortFrameLength;
    if (write.function == unitmap::WriteSingleRegister) {
        mod_Set_SetBuf(request.frame.data(), address, write.firstRegister, write.values[0]);
        return request;
    }
    std::array<unsigned char, 2 * std::tuple_size<decltype(write.values)>::value> data{};
    for (std::size_t i = 0; i < write.values.size(); ++i) {
        data[2 * i] = static_cast<unsigned char>(write.values[i] >> 8);
        data[2 * i + 1] = static_cast<unsigned char>(write.values[i] & 0xFF);
    }
    request.length =
        buildCmd16(request.frame.data(), address, write.firstRegister, write.count, write.count, data.data());
    return request;
}

} // namespace driver
