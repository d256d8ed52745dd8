#include "hidstandin.h"

#include <hidapi.h>

struct hid_device_
{
    bool open = true;
};

HidStandIn& hidStandIn()
{
    static HidStandIn state;
    return state;
}

hid_device* hid_open(unsigned short vendorId, unsigned short productId, const wchar_t*)
{
    HidStandIn& state = hidStandIn();
    ++state.opens;
    state.vendorId = vendorId;
    state.productId = productId;
    if (!state.present)
        return nullptr;
    ++state.openNow;
    return new hid_device;
}

int hid_set_nonblocking(hid_device* device, int nonblock)
{
    if (device->open && nonblock == 1)
        ++hidStandIn().nonBlocking;
    return 0;
}

void hid_close(hid_device* device)
{
    --hidStandIn().openNow;
    delete device;
}
