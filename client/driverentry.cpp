#include "driverentry.h"

#include "vek5client.h"

void vek5DataProce(int id, float value, void* context)
{
    if (!context)
        return;
    if (vek5Client* collector = *static_cast<vek5Client**>(context))
        collector->parseData(id, value);
}
