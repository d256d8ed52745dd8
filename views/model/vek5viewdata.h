#pragma once

#include "parameterinformation.h"

#include <QObject>

/// What the pages of a model range show: lists of records and the alarm texts. A range is a subclass that
/// fills the lists in its constructor and deletes the records; afterwards nothing changes but a record's
/// value text. GUI thread only.
class vek5ViewData : public QObject
{
    Q_OBJECT

public:
    explicit vek5ViewData(QObject* parent = nullptr);
    ~vek5ViewData() override;

    // Copies of the lists share the records, so none may outlive this object.
    virtual QList<ParameterInformation*> getDeviceData();
    virtual QList<ParameterInformation*> getBatteryData();
    virtual QList<ParameterInformation*> getRecInvData();
    virtual QList<ParameterInformation*> getInputData();
    virtual QList<ParameterInformation*> getOutputData();
    virtual QList<ParameterInformation*> getBypassData();
    virtual QList<ParameterInformation*> getBasicConfig();
    virtual QList<ParameterInformation*> getBatteryConfig();
    virtual QList<ParameterInformation*> getAdjustConfig();
    virtual QList<ParameterInformation*> getSpecialConfig();
    virtual QList<ParameterInformation*> getDevInfoConfig();
    /// Alarm texts by alarm index; an index without an alarm has an empty text.
    virtual QStringList getAlarmList();
    /// Model code of the range.
    virtual int getDevCode();

    /// Appends a new record to a list and returns it; the caller sets type, point and options. The list's
    /// owner deletes it. Mind the order of the limits: least, then greatest.
    static ParameterInformation* addDataDesc(QList<ParameterInformation*>& list, const QString& label,
                                             const QString& valueText, const QString& unit, float ratio,
                                             int minRaw, int maxRaw);

protected:
    int devCode = 0;
    QList<ParameterInformation*> deviceData;
    QList<ParameterInformation*> batteryData;
    QList<ParameterInformation*> recInvData;
    QList<ParameterInformation*> inputData;
    QList<ParameterInformation*> outputData;
    QList<ParameterInformation*> bypassData;
    QList<ParameterInformation*> basicConfig;
    QList<ParameterInformation*> batteryConfig;
    QList<ParameterInformation*> adjustConfig;
    QList<ParameterInformation*> specialConfig;
    QList<ParameterInformation*> devInfoConfig;
    QStringList alarmList;
};
