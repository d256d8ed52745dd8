// What the pages cost: one refresh of each tab, one frame of the diagram, the diagram's animation.

#include "energyline.h"
#include "vek5view.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QTabWidget>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>

namespace {

using Points = QMap<int, QVariant>;

constexpr int animationMs = 5000;

// Every point that the pages read; each differs from one variant to the next, alarms come and go.
Points everyPoint(int variant)
{
    Points points;
    for (int alarm = 0; alarm < 512; ++alarm)
        points.insert(2000 + alarm, (alarm / 8 + variant) % 4 == 0 ? 1 : 0); // a quarter of them stands
    for (int id = 3000; id < 3164; ++id)
        points.insert(id, static_cast<float>(id % 7 + variant));
    for (int id = 4000; id < 4276; ++id)
        points.insert(id, static_cast<float>(id % 211 + variant) / 4);
    for (int flow = 4218; flow <= 4224; ++flow)
        points.insert(flow, 1);
    return points;
}

std::unique_ptr<vek5View> makeView(int tab)
{
    auto view = std::make_unique<vek5View>();
    view->refreshLayout();
    view->setUserInfo(QString(), 2);
    view->resize(1024, 760);
    view->findChild<QTabWidget*>(QStringLiteral("devStacketTable"))->setCurrentIndex(tab);
    view->show();
    QCoreApplication::processEvents();
    return view;
}

// From a data map to what is painted of it.
void refreshTab(benchmark::State& state)
{
    const auto view = makeView(static_cast<int>(state.range(0)));
    const bool isChanging = state.range(1) != 0;
    const Points variants[] = {everyPoint(0), everyPoint(1)};
    int next = 0;
    for (auto _ : state) {
        next = isChanging ? 1 - next : 0;
        view->flushData(variants[next]);
        QCoreApplication::processEvents();
    }
}

void diagramFrame(benchmark::State& state)
{
    Energyline diagram;
    diagram.resize(1000, 760);
    diagram.flushData(everyPoint(0));
    const int ratio = static_cast<int>(state.range(0));
    QImage frame(QSize(1000, 760) * ratio, QImage::Format_ARGB32_Premultiplied);
    frame.setDevicePixelRatio(ratio);
    for (auto _ : state)
        diagram.render(&frame);
}

// Share of one processor that the animation of a diagram takes, all flows on.
void animation(benchmark::State& state)
{
    Energyline diagram;
    diagram.resize(1000, 760);
    diagram.flushData(everyPoint(0));
    if (state.range(0) != 0)
        diagram.show();
    QCoreApplication::processEvents();
    for (auto _ : state) {
        const std::clock_t begin = std::clock();
        QEventLoop loop;
        QTimer::singleShot(animationMs, &loop, &QEventLoop::quit);
        loop.exec();
        const double usedS = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        state.counters["processor_percent"] = 100 * usedS / (animationMs / 1000.0);
    }
}

} // namespace

BENCHMARK(refreshTab)
    ->ArgNames({"tab", "changing"})
    ->ArgsProduct({{0, 1, 2, 3}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(diagramFrame)->ArgName("ratio")->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
BENCHMARK(animation)->ArgName("visible")->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
