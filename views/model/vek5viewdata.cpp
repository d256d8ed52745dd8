#include "vek5viewdata.h"

vek5ViewData::vek5ViewData(QObject* parent)
    : QObject(parent)
{}

vek5ViewData::~vek5ViewData() = default;

QList<ParameterInformation*> vek5ViewData::getDeviceData()
{
    return deviceData;
}

QList<ParameterInformation*> vek5ViewData::getBatteryData()
{
    return batteryData;
}

QList<ParameterInformation*> vek5ViewData::getRecInvData()
{
    return recInvData;
}

QList<ParameterInformation*> vek5ViewData::getInputData()
{
    return inputData;
}

QList<ParameterInformation*> vek5ViewData::getOutputData()
{
    return outputData;
}

QList<ParameterInformation*> vek5ViewData::getBypassData()
{
    return bypassData;
}

QList<ParameterInformation*> vek5ViewData::getBasicConfig()
{
    return basicConfig;
}

QList<ParameterInformation*> vek5ViewData::getBatteryConfig()
{
    return batteryConfig;
}

QList<ParameterInformation*> vek5ViewData::getAdjustConfig()
{
    return adjustConfig;
}

QList<ParameterInformation*> vek5ViewData::getSpecialConfig()
{
    return specialConfig;
}

QList<ParameterInformation*> vek5ViewData::getDevInfoConfig()
{
    return devInfoConfig;
}

QStringList vek5ViewData::getAlarmList()
{
    return alarmList;
}

int vek5ViewData::getDevCode()
{
    return devCode;
}

ParameterInformation* vek5ViewData::addDataDesc(QList<ParameterInformation*>& list, const QString& label,
                                                const QString& valueText, const QString& unit, float ratio,
                                                int minRaw, int maxRaw)
{
    auto* record = new ParameterInformation;
    record->label = label;
    record->valueText = valueText;
    record->unit = unit;
    record->ratio = ratio;
    record->maxRaw = maxRaw;
    record->minRaw = minRaw;
    list << record;
    return record;
}
