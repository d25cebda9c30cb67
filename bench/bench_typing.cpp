// From a key press in the field for names to its letter on the window, beside the toolkit's own
// field: with the keys of a keyboard, with those of a keypad, in a long name, and the sheet of
// symbols.

#include "bench/paintwatch.h"
#include "bench/stopwatch.h"
#include "platform/keymap.h"
#include "platform/zapplication.h"
#include "platform/zkeypadinput.h"
#include "platform/zmultilineedit.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace
{

constexpr int Presses = 400;

void send(QWidget* widget, QEvent::Type type, int key)
{
    const QString text = key < Qt::Key_Escape ? QString(QChar(key)).toLower() : QString();
    QKeyEvent event(type, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
}

/// Milliseconds from a press of a key in `field` until `shown` is painted and on its way to the
/// display.
double timeOf(QWidget* field, int key, QWidget* shown)
{
    PaintWatch watch(shown);
    const double time = millisecondsOf([&] {
        send(field, QEvent::KeyPress, key);
        watch.wait();
    });
    send(field, QEvent::KeyRelease, key);
    return time;
}

struct Times {
    double median;
    double longest;
};

template<typename Field>
Times typing(Field* field, const char* keys, const QString& text)
{
    std::vector<double> times;
    for (int i = 0; i < Presses; ++i) {
        // So that it does not grow from what is measured to something else.
        if (i % 20 == 0)
            field->setText(text);
        QApplication::processEvents();
        times.push_back(
            timeOf(field, keys[size_t(i) % std::char_traits<char>::length(keys)], field));
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.back()};
}

double openingTheSheet(ZMultiLineEdit* field)
{
    std::vector<double> times;
    for (int i = 0; i < 51; ++i) {
        times.push_back(timeOf(field, '*', ZScreen::instance()));
        QApplication::processEvents();
        send(ZScreen::instance()->active(), QEvent::KeyPress, Qt::Key_F3);
        QApplication::processEvents();
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

/// A box of the screen with the field for names, as the dialog for them has it.
class NameBox : public QWidget
{
public:
    NameBox() : QWidget(ZScreen::instance()), field(this, false, 1, "ZLineEdit")
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Box);
        resize(ZScreen::Width, ZScreen::Height);
        field.setGeometry(11, 150, 215, field.sizeHint().height());
        show();
        field.setFocus();
    }

    ZMultiLineEdit field;
};

Times typingInAPlainField(const QString& text)
{
    QWidget window;
    window.resize(ZScreen::Width, ZScreen::Height);
    QLineEdit field(&window);
    field.setGeometry(11, 150, 215, field.sizeHint().height());
    window.show();
    field.setFocus();
    QApplication::processEvents();
    return typing(&field, "ABCDEFGHIJKLMNOPQRSTUVWXYZ", text);
}

void report(const char* what, const Times& times, const Times& plain)
{
    printRow(what, times.median, "ms", "plain field, a key", plain.median);
    printRow("  the slowest press", times.longest, "ms", "aim", FrameMilliseconds);
}

} // namespace

int main(int argc, char** argv)
{
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    QApplication::setFont(ZSkinService::font(QStringLiteral("DejaVu Sans"), 14));
    const QString longName(250, QLatin1Char('n'));
    const Times plain = typingInAPlainField(QString());
    const Times plainLong = typingInAPlainField(longName);
    NameBox box;
    report("a key to its letter in the field", typing(&box.field, "ABCDEFGHIJKLMNOPQRS", {}),
           plain);
    qputenv("QUARN_KEYPAD", "1");
    KeyMap::instance().loadKeypadVariable("QUARN_KEYPAD");
    report("a keypad's digit to its letter", typing(&box.field, "2233344566778899", {}), plain);
    report("the same in a name of 250 letters", typing(&box.field, "2233344566778899", longName),
           plainLong);
    printRow("the key \"*\" to the sheet of symbols", openingTheSheet(&box.field), "ms", "aim",
             FrameMilliseconds);
    return 0;
}
