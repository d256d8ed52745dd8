#pragma once

#include "flowtexts.h"

#include <QPointF>
#include <QRectF>

#include <iterator>

/// Where everything in the energy-flow diagram lies: in pixels about the widget's centre, never scaled.
namespace flowgeometry {

/// Which panels there are, by the index of their view flag.
enum View
{
    InputView,
    BypassView,
    DeviceView,
    LoadView,
    BatteryView,
    RecInvView,
    viewCount
};

struct Block
{
    const char* name; ///< translated in the diagram's context
    QRectF box;
    const char* image;      ///< null: drawn by the diagram
    QRectF imageBox;        ///< on whole pixels, else images blur
    View views[2];          ///< the panels that a click opens or closes
    flowtexts::Text status; ///< in the tool tip; textCount: none
};

struct Panel
{
    const char* title; ///< translated in the diagram's context
    QRectF box;
    const flowtexts::PanelRow* rows;
    int rowCount;
};

template <int count>
constexpr Panel panel(const char* title, const QRectF& box, const flowtexts::PanelRow (&rows)[count])
{
    return {title, box, rows, count};
}

// clang-format off
// Twice the same panel is one panel. REC and INV open and close the same two: deliberate.
constexpr Block blocks[] = {
    {QT_TRANSLATE_NOOP("Energyline", "INPUT"),   {-300, -37.5, 75, 75},  "://image/INPUT.png", {-277, -5, 30, 10},   {InputView, InputView},     flowtexts::textCount},
    {QT_TRANSLATE_NOOP("Energyline", "BYPASS"),  {-300, -187.5, 75, 75}, "://image/INPUT.png", {-277, -155, 30, 10}, {BypassView, BypassView},   flowtexts::BypassStatus},
    {QT_TRANSLATE_NOOP("Energyline", "REC"),     {-130, -37.5, 75, 75},  "://image/REC.png",   {-116, -22, 46, 45},  {RecInvView, DeviceView},   flowtexts::RectifierState},
    {QT_TRANSLATE_NOOP("Energyline", "BATTERY"), {-25, 80, 50, 75},      nullptr,              {},                   {BatteryView, BatteryView}, flowtexts::BatteryState},
    {QT_TRANSLATE_NOOP("Energyline", "INV"),     {55, -37.5, 75, 75},    "://image/INV.png",   {69, -23, 48, 46},    {RecInvView, DeviceView},   flowtexts::InverterState},
    {QT_TRANSLATE_NOOP("Energyline", "LOAD"),    {225, -37.5, 75, 75},   "://image/LOAD.png",  {235, -20, 56, 40},   {LoadView, LoadView},       flowtexts::OutputMode},
};
constexpr int blockCount = std::size(blocks);
constexpr int batteryBlock = 3;

// In the order of the view flags.
constexpr Panel panels[viewCount] = {
    panel(QT_TRANSLATE_NOOP("Energyline", "INPUT"),   {-440, 45, 315, 105},   flowtexts::inputPanel),
    panel(QT_TRANSLATE_NOOP("Energyline", "BYPASS"),  {-440, -340, 250, 130}, flowtexts::bypassPanel),
    panel(QT_TRANSLATE_NOOP("Energyline", "DEVICE"),  {-175, -340, 315, 155}, flowtexts::devicePanel),
    panel(QT_TRANSLATE_NOOP("Energyline", "LOAD"),    {100, 45, 320, 230},    flowtexts::loadPanel),
    panel(QT_TRANSLATE_NOOP("Energyline", "BATTERY"), {-440, 163, 315, 180},  flowtexts::batteryPanel),
    panel(QT_TRANSLATE_NOOP("Energyline", "REC/INV"), {145, -340, 300, 130},  flowtexts::recInvPanel),
};

// One stroke that passes every path below, some of it twice.
constexpr QPointF track[] = {
    {-225, -150}, {175, -150}, {175, 0}, {225, 0}, {0, 0}, {0, 75}, {0, 0}, {-225, 0},
};

/// A path that power takes, in its direction.
struct Path
{
    QPointF points[4];
    int count;
};

// In the order of the flow flags.
constexpr Path paths[] = {
    {{{-225, 0}, {-130, 0}}, 2},
    {{{-55, 0}, {0, 0}, {0, 75}}, 3},
    {{{0, 75}, {0, 0}, {55, 0}}, 3},
    {{{-55, 0}, {55, 0}}, 2},
    {{{130, 0}, {225, 0}}, 2},
    {{{-225, -150}, {175, -150}, {175, 0}, {225, 0}}, 4},
};
// clang-format on

/// Height of a block's name, which stands right above it and may be somewhat wider.
constexpr double nameHeight = 22;
constexpr double nameOverhang = 40;

constexpr QRectF nameBox(const Block& block)
{
    return {block.box.x() - nameOverhang, block.box.y() - nameHeight, block.box.width() + 2 * nameOverhang,
            nameHeight};
}

/// Where the line to the battery passes behind the battery's name: nothing of it is drawn here.
constexpr QRectF hiddenTrack{-10, nameBox(blocks[batteryBlock]).y(), 20, nameHeight};

constexpr bool areApart(const QRectF& a, const QRectF& b)
{
    return a.right() <= b.left() || b.right() <= a.left() || a.bottom() <= b.top() || b.bottom() <= a.top();
}

constexpr bool nothingIsCovered()
{
    for (int i = 0; i < viewCount; ++i) {
        for (int j = i + 1; j < viewCount; ++j) {
            if (!areApart(panels[i].box, panels[j].box))
                return false;
        }
        for (const Block& block : blocks) {
            if (!areApart(panels[i].box, block.box))
                return false;
        }
    }
    return true;
}
static_assert(nothingIsCovered(), "an open panel covers another one or a block");

/// The least width or height that holds all boxes, given a box's two edges on that axis.
template <typename NearEdge, typename FarEdge>
constexpr int leastExtent(NearEdge nearEdge, FarEdge farEdge)
{
    double half = 0;
    const auto include = [&](const QRectF& box) {
        half = half < -nearEdge(box) ? -nearEdge(box) : half;
        half = half < farEdge(box) ? farEdge(box) : half;
    };
    for (const Panel& panel : panels)
        include(panel.box);
    for (const Block& block : blocks)
        include(block.box);
    return static_cast<int>(2 * half + 0.5);
}

constexpr int leastWidth =
    leastExtent([](const QRectF& box) { return box.left(); }, [](const QRectF& box) { return box.right(); });
constexpr int leastHeight =
    leastExtent([](const QRectF& box) { return box.top(); }, [](const QRectF& box) { return box.bottom(); });

} // namespace flowgeometry
