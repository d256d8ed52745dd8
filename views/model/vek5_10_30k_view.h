#pragma once

#include "vek5viewdata.h"

/// The records and alarm texts of the 10-30 kVA range, from the tables of catalogue.h and the event texts,
/// translated when it is built. Owns its records.
class vek5_10_30k_View : public vek5ViewData
{
    Q_OBJECT

public:
    explicit vek5_10_30k_View(QObject* parent = nullptr);
    ~vek5_10_30k_View() override;
};
