#pragma once

#include <QtGlobal>

/// The driver's callback: hands one value to the collector. context is the address of a pointer to the
/// collector, never the collector itself. Runs inside a driver call, on its thread.
Q_DECL_EXPORT void vek5DataProce(int id, float value, void* context);
