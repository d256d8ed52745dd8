#include "vek5_10_30k_view.h"

#include "catalogue.h"
#include "eventtexts.h"

namespace {

constexpr int modelCode = 222;
constexpr int alarmCount = 512;

// Empty texts stay out of the translator's hands: it might answer with its catalogue's header.
QString translated(const char* text)
{
    return *text ? vek5_10_30k_View::tr(text) : QString();
}

void addOptions(ParameterInformation* record, const catalogue::Options& choices)
{
    QStringList texts;
    QList<float> values;
    for (int i = 0; i < choices.count; ++i) {
        const catalogue::Option& option = choices.first[i];
        texts << (option.isTranslated ? translated(option.text) : QString::fromUtf8(option.text));
        values << option.value;
    }
    record->addCombo(texts, values);
}

template <int size>
void fill(QList<ParameterInformation*>& list, const catalogue::Row (&rows)[size])
{
    for (const catalogue::Row& row : rows) {
        ParameterInformation* record =
            vek5ViewData::addDataDesc(list, translated(row.label), translated("-"), translated(row.unit),
                                      row.ratio, row.minRaw, row.maxRaw);
        addOptions(record, row.choices);
        record->pointId = row.pointId;
        record->type = row.type;
        record->pointCount = row.pointCount;
    }
}

QStringList alarmTexts()
{
    QStringList texts;
    texts.reserve(alarmCount);
    for (int i = 0; i < alarmCount; ++i)
        texts << QString();
    for (const eventtexts::EventText& event : eventtexts::appearances)
        texts[event.code] = translated(event.text);
    return texts;
}

} // namespace

vek5_10_30k_View::vek5_10_30k_View(QObject* parent)
    : vek5ViewData(parent)
{
    devCode = modelCode;
    fill(deviceData, catalogue::deviceData);
    fill(batteryData, catalogue::batteryData);
    fill(recInvData, catalogue::recInvData);
    fill(inputData, catalogue::inputData);
    fill(outputData, catalogue::outputData);
    fill(bypassData, catalogue::bypassData);
    fill(basicConfig, catalogue::basicConfig);
    fill(batteryConfig, catalogue::batteryConfig);
    fill(adjustConfig, catalogue::adjustConfig);
    fill(devInfoConfig, catalogue::devInfoConfig);
    alarmList = alarmTexts();
}

vek5_10_30k_View::~vek5_10_30k_View()
{
    for (const QList<ParameterInformation*>& list :
         {deviceData, batteryData, recInvData, inputData, outputData, bypassData, basicConfig, batteryConfig,
          adjustConfig, specialConfig, devInfoConfig})
        qDeleteAll(list);
}
