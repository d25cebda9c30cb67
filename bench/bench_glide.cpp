// What it costs while the name of the current row glides, as a share of a processor, beside the aim
// and beside the list at rest.

#include "bench/stopwatch.h"
#include "platform/zapplication.h"
#include "platform/zglide.h"
#include "platform/zlistbox.h"
#include "platform/zmotion.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <ctime>

namespace
{

constexpr double AimPercent = 3;
constexpr int Rows = 100000;
constexpr auto RestTime = std::chrono::seconds(5);

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// The share of a processor that is used while `goesOn` says so.
template<typename Condition>
double percentWhile(const Condition& goesOn)
{
    const double used = processorSeconds();
    const auto begin = std::chrono::steady_clock::now();
    while (goesOn())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    return 100 * (processorSeconds() - used) / passed.count();
}

/// The window of the program with a long list in full information.
class ListWindow : public QWidget
{
public:
    ListWindow()
        : QWidget(ZScreen::instance()),
          list(QStringLiteral("%I%M"), this, 0, ZSkinService::clsListBox)
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Main);
        resize(ZScreen::Width, ZScreen::Height);
        list.setGeometry(0, 42, ZScreen::Width, 258);
        for (const bool highlighted : {false, true})
            list.setItemFont(2, ZSkinService::font(font().family(), 13), highlighted);
        list.appendLater(Rows, 2, {32, 32}, [this](int number) { return makeRow(number); });
        show();
        list.setFocus();
    }

    ZListBox list;

private:
    ZListBoxItem* makeRow(int number)
    {
        QPixmap icon(32, 32);
        icon.fill(Qt::blue);
        auto* row = new ZListBoxItem(&list, QStringLiteral("%I%M"));
        row->setPixmap(0, icon);
        row->appendSubItem(
            1, QStringLiteral("%1, a name that is much longer than a row is wide.txt").arg(number),
            false);
        row->appendSubItem(1, QStringLiteral("1.5 Kb\t\t\t05/03/2008"), false);
        return row;
    }
};

} // namespace

int main(int argc, char** argv)
{
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    ListWindow window;
    window.list.setCurrentItem(Rows / 2);
    const ZGlide& glide = *window.list.findChild<ZGlide*>();
    // What comes with the window is over once it has the keyboard.
    while (!window.list.hasFocus())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const auto end = std::chrono::steady_clock::now() + RestTime;
    QTimer waker;
    waker.start(RestTime);
    const double resting = percentWhile([end] { return std::chrono::steady_clock::now() < end; });
    waker.stop();
    ZMotion::setEnabled(true);
    window.list.setCurrentItem(Rows / 2 + 1);
    const double gliding = percentWhile([&glide] { return glide.isRunning(); });
    printRow("a name that glides", gliding, "% cpu", "aim", AimPercent);
    printRow("a name that glides", gliding, "% cpu", "the same list at rest", resting);
    return 0;
}
