#include "unitsummary.h"

#include "alarmpoints.h"

namespace {

// The columns of the plugin's data-log row that say how a unit is.
constexpr int loadColumn = 7; // per cent, phases separated by "/"
constexpr int outputModeColumn = 9;

constexpr int supplyPoint = 4250;
constexpr int noSupply = 0;
constexpr int mainsSupply = 1;
constexpr const char* supplyTexts[] = {
    QT_TRANSLATE_NOOP("UnitSummary", "No supply"),  QT_TRANSLATE_NOOP("UnitSummary", "On mains"),
    QT_TRANSLATE_NOOP("UnitSummary", "On battery"), QT_TRANSLATE_NOOP("UnitSummary", "On mains and battery"),
    QT_TRANSLATE_NOOP("UnitSummary", "On bypass"),
};
constexpr int supplyCount = sizeof(supplyTexts) / sizeof(supplyTexts[0]);

UnitSummary::Tone toneOf(int supply)
{
    if (supply == noSupply)
        return UnitSummary::Tone::Danger;
    return supply == mainsSupply ? UnitSummary::Tone::Calm : UnitSummary::Tone::Attention;
}

QString mostLoaded(const QString& phases)
{
    double most = 0;
    bool hasValue = false;
    const QStringList texts = phases.split(QLatin1Char('/'));
    for (const QString& text : texts) {
        bool isNumber = false;
        most = qMax(most, text.toDouble(&isNumber));
        hasValue = hasValue || isNumber;
    }
    return hasValue ? UnitSummary::tr("Load %1 %").arg(qRound(most)) : QString();
}

} // namespace

UnitSummary UnitSummary::of(const UnitState& state, const QStringList& logRow, const QDate& today)
{
    UnitSummary summary;
    if (state.contact() == UnitState::Contact::Lost) {
        summary.tone = Tone::Silent;
        summary.stateText = tr("No answer since %1").arg(sinceText(state.silentSince(), today));
    } else if (state.isMissing()) {
        summary.tone = Tone::Silent;
        summary.stateText = tr("No answer since the start");
    } else if (state.liveData().isEmpty()) {
        summary.stateText = tr("No answer yet");
    } else {
        const int supply = state.liveData().value(supplyPoint, -1).toInt();
        const bool isKnown = supply >= 0 && supply < supplyCount;
        summary.tone = toneOf(supply);
        summary.stateText = isKnown ? tr(supplyTexts[supply]) : logRow.value(outputModeColumn);
        summary.loadText = mostLoaded(logRow.value(loadColumn));
        summary.alarmCount = alarmpoints::activeCount(state.liveData());
    }
    return summary;
}

QString UnitSummary::sinceText(const QString& silentSince, const QDate& today)
{
    const QString date = silentSince.section(QLatin1Char(' '), 0, 0);
    return date == today.toString(Qt::ISODate) ? silentSince.section(QLatin1Char(' '), 1) : silentSince;
}

QString UnitSummary::alarmText() const
{
    return tr("Alarms: %1").arg(alarmCount); // reads well with any number
}

QString UnitSummary::spokenText(const QString& unitName) const
{
    QStringList parts{unitName, stateText};
    if (!loadText.isEmpty())
        parts += loadText;
    if (alarmCount > 0)
        parts += alarmText();
    return parts.join(QStringLiteral(", "));
}

bool UnitSummary::operator==(const UnitSummary& other) const
{
    return tone == other.tone && stateText == other.stateText && loadText == other.loadText &&
           alarmCount == other.alarmCount;
}
