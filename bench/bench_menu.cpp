// From a key press to what is painted for it, in the menus of the main window: beside a frame of a
// display, and beside a bare widget that draws as many rows of a picture and a text.

#include "bench/benchprogram.h"
#include "bench/paintwatch.h"
#include "bench/stopwatch.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "shell/fm.h"

#include <QPainter>

namespace
{

constexpr int Runs = 201;

void press(int code)
{
    pressIn(ZScreen::instance()->active(), code);
}

/// The milliseconds until `painted` shows what a key does; then the other keys put it back.
double pressToPaint(int code, QWidget* painted, const QList<int>& before, const QList<int>& after)
{
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        for (const int key : before)
            press(key);
        QCoreApplication::processEvents();
        PaintWatch watch(painted);
        times.push_back(millisecondsOf([&] {
            press(code);
            watch.wait();
        }));
        for (const int key : after)
            press(key);
        QCoreApplication::processEvents();
    }
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

/// As many rows of the same size, painted without any thought.
class BareRows : public QWidget
{
public:
    BareRows(const ZOptionsMenu& menu, QWidget* parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setFont(menu.font());
        for (int position = 0; position < menu.count(); ++position) {
            icons_.append(menu.iconAt(position));
            texts_.append(menu.textAt(position).trimmed());
        }
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        const int height = this->height() / int(texts_.size());
        for (int row = 0; row < int(texts_.size()); ++row) {
            painter.drawPixmap(6, row * height + 2, icons_.at(row));
            painter.drawText(QRect(33, row * height, width() - 33, height), Qt::AlignVCenter,
                             texts_.at(row));
        }
    }

private:
    QList<QPixmap> icons_;
    QStringList texts_;
};

void benchMenus(const FM& window)
{
    constexpr int SoftLeft = PhoneKey::SoftLeft;
    constexpr int SoftRight = PhoneKey::SoftRight;
    ZOptionsMenu* options = window.optionsMenu;
    press(SoftLeft);
    QCoreApplication::processEvents();
    const QRect place = options->geometry();
    press(SoftRight);

    BareRows bare(*options, ZScreen::instance());
    bare.setGeometry(place);
    bare.show();
    const double rows = medianMilliseconds(Runs, [&bare] { bare.repaint(); });
    bare.hide();

    const auto print = [rows](const char* what, double value) {
        printRow(what, value, "ms", "one frame", FrameMilliseconds);
        printRow(what, value, "ms", "bare rows of picture and text", rows);
    };
    print("menu: soft key to painted menu", pressToPaint(SoftLeft, options, {}, {SoftRight}));
    press(SoftLeft);
    print("menu: key press to painted highlight", pressToPaint(PhoneKey::Down, options, {}, {}));
    print("menu: digit to painted submenu", pressToPaint('3', window.copyMenu, {}, {SoftRight}));
    print("menu: back to painted menu", pressToPaint(SoftRight, options, {'3'}, {}));
    press(SoftRight);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    BenchProgram program(argc, argv);
    benchMenus(*program.start());
    return 0;
}
