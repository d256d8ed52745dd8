#include "picturerun.h"

#include "alarmpoints.h"
#include "lineoutput.h"
#include "picturefolder.h"
#include "unitsession.h"

#include <QApplication>
#include <QEventLoop>
#include <QPainter>
#include <QTimer>
#include <QWidget>

#include <algorithm>

namespace {

constexpr int lookIntervalMs = 20;
constexpr int msPerSecond = 1000;
constexpr int supplyPoint = 4250;
const QColor windowEdge(0x7F, 0x88, 0xAD); // where no window manager draws one

// How far above the others a window lies.
int level(const QWidget& window)
{
    if (&window == QApplication::activePopupWidget())
        return 2;
    return &window == QApplication::activeModalWidget() ? 1 : 0;
}

} // namespace

PictureRun::PictureRun(PictureFolder& folder, LineOutput& output, int limitS)
    : m_folder(folder)
    , m_output(output)
    , m_limitS(limitS)
{}

void PictureRun::begin()
{
    m_deadline.setRemainingTime(qint64(m_limitS) * msPerSecond);
}

bool PictureRun::waitUntil(const std::function<bool()>& isMet, const QString& what)
{
    QEventLoop loop;
    QTimer look;
    connect(&look, &QTimer::timeout, &loop, [&] {
        if (isMet() || m_isStopped || m_deadline.hasExpired())
            loop.quit();
    });
    look.start(lookIntervalMs);
    if (!isMet())
        loop.exec();
    if (isMet())
        return true;
    if (m_isStopped)
        return fail(ExitCode::PictureMissing, QStringLiteral("stopped before all pictures were taken"));
    return fail(ExitCode::PictureMissing,
                QStringLiteral("waited %1 s: no %2 came in time").arg(QString::number(m_limitS), what));
}

bool PictureRun::waitForSupply(const UnitSession& unit, Supply supply, const QString& what,
                               bool isAlarmNeeded)
{
    const int mode = static_cast<int>(supply);
    const auto isMet = [&] {
        const QMap<int, QVariant>& data = unit.state().liveData();
        return data.value(supplyPoint).toInt() == mode &&
               (!isAlarmNeeded || alarmpoints::activeCount(data) > 0);
    };
    return waitUntil(isMet, QStringLiteral("%1 (point %2 = %3) of %4")
                                .arg(what, QString::number(supplyPoint), QString::number(mode), unit.name()));
}

QPixmap PictureRun::pictureOf(QWidget& window)
{
    // Only what lays out is let through, level by level: events of the unit would change the state to be
    // shown.
    for (int level = 0; level < 10; ++level)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QPixmap result = window.grab();
    QPainter painter(&result);
    QWidgetList windows = QApplication::topLevelWidgets();
    std::stable_sort(windows.begin(), windows.end(),
                     [](QWidget* a, QWidget* b) { return level(*a) < level(*b); });
    for (QWidget* other : qAsConst(windows)) {
        if (other == &window || !other->isVisible())
            continue;
        const QPoint place = other->pos() - window.pos();
        painter.drawPixmap(place, other->grab());
        painter.setPen(windowEdge);
        painter.drawRect(QRect(place, other->size()).adjusted(0, 0, -1, -1));
    }
    return result;
}

bool PictureRun::write(const QPixmap& picture, const QString& name)
{
    const QString file = m_folder.add(picture, name);
    if (file.isEmpty())
        return fail(ExitCode::PictureMissing, m_folder.error());
    m_output.write(file.toLocal8Bit());
    return m_output.isOpen() ||
           fail(ExitCode::OutputFailed, QStringLiteral("standard output: %1").arg(m_output.errorText()));
}

bool PictureRun::fail(ExitCode code, const QString& error)
{
    m_exitCode = code;
    m_error = error;
    return false;
}
