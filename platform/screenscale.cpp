#include "platform/screenscale.h"

#include "platform/screensize.h"
#include "platform/x11display.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace
{

constexpr double SmallestSet = 0.25;
constexpr double LargestSet = 16;
constexpr double Step = 0.25;
constexpr double LargestFitting = 6;

const char* variable = nullptr;
bool isSettled = false;
double belowOne = 0;
double windowsDensity = 0;

bool isBare(const QString& platform)
{
    static const QStringList bare{"linuxfb",  "eglfs", "directfb",
                                  "kmsconvt", "vnc",   "vkkhrdisplay"};
    return bare.contains(platform);
}

/// 0 if there is none.
double fromVariable()
{
    if (variable == nullptr || !qEnvironmentVariableIsSet(variable))
        return 0;
    const QByteArray text = qgetenv(variable);
    bool ok = false;
    const double scale = text.toDouble(&ok);
    if (ok && scale >= SmallestSet && scale <= LargestSet)
        return scale;
    qWarning("%s: not a scale from 0.25 to 16: %s", variable, text.constData());
    return 0;
}

/// The toolkit's platform as it will be chosen, as far as it can be known before it is loaded.
QString platformToBe(int argc, char** argv)
{
    QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    for (int i = 1; i + 1 < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0)
            platform = QString::fromLocal8Bit(argv[i + 1]);
    }
    return platform.section(QLatin1Char(':'), 0, 0);
}

/// Whether it is that of a compositor, which ends programs whose full-screen window is too large.
bool isWayland(const QString& platform)
{
    return platform.startsWith(QLatin1String("wayland")) ||
           (platform.isEmpty() && qEnvironmentVariableIsSet("WAYLAND_DISPLAY"));
}

bool isX11(const QString& platform)
{
    return platform == QLatin1String("xcb") ||
           (platform.isEmpty() && qEnvironmentVariableIsSet("DISPLAY") && !isWayland(platform));
}

/// Most displays are known to the toolkit alone, so it is started and ended once.
QSize toolkitsDisplay(int& argc, char** argv)
{
    int count = argc;
    QGuiApplication probe(count, argv);
    const QScreen* display = QGuiApplication::primaryScreen();
    return display == nullptr ? QSize() : display->geometry().size();
}

/// The size of the display, as far as it bounds the scale; empty otherwise.
QSize boundingDisplay(const QString& platform, bool isSet, int& argc, char** argv)
{
    if (isBare(platform) || (isSet && isWayland(platform)))
        return toolkitsDisplay(argc, argv);
    return isSet && isX11(platform) ? x11DisplaySize() : QSize();
}

bool fits(double scale, QSize display)
{
    return ScreenSize::Width * scale <= display.width() &&
           ScreenSize::Height * scale <= display.height();
}

/// The scale to settle; 0 for none.
double settledScale(int& argc, char** argv, const QString& platform)
{
    const double wanted = fromVariable();
    const QSize display = boundingDisplay(platform, wanted > 0, argc, argv);
    if (display.isEmpty() || (wanted > 0 && fits(wanted, display)))
        return wanted;
    const double most = ScreenScale::fitting(display);
    if (wanted == 0)
        return most;
    qWarning("%s: the display has no room for %g, but for %g", variable, wanted, most);
    return most;
}

} // namespace

void ScreenScale::setVariable(const char* name)
{
    variable = name;
}

void ScreenScale::prepare(int& argc, char** argv)
{
    const QString platform = platformToBe(argc, argv);
    const double scale = settledScale(argc, argv, platform);
    isSettled = scale != 0;
    belowOne = scale < 1 ? scale : 0;
    windowsDensity = 0;
    if (!isSettled && platform == QLatin1String("offscreen"))
        return;
    // The display's own density must not come on top.
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    const bool isToolkits = isSettled && belowOne == 0;
    qputenv("QT_SCALE_FACTOR", isToolkits ? QByteArray::number(scale) : QByteArrayLiteral("1"));
}

double ScreenScale::settledBelowOne()
{
    return belowOne;
}

bool ScreenScale::hasDesktop()
{
    const QString platform = QGuiApplication::platformName();
    return platform == QLatin1String("xcb") || platform.startsWith(QLatin1String("wayland"));
}

bool ScreenScale::followsWindow()
{
    return !isSettled && hasDesktop();
}

bool ScreenScale::isBareDisplay()
{
    return isBare(QGuiApplication::platformName());
}

double ScreenScale::fitting(QSizeF pixels)
{
    const double fit =
        std::min(pixels.width() / ScreenSize::Width, pixels.height() / ScreenSize::Height);
    return std::clamp(std::floor(fit / Step) * Step, SmallestSet, LargestFitting);
}

QSize ScreenScale::firstWindow(QSizeF display)
{
    const double whole =
        std::clamp(std::floor(display.height() * 2 / 3 / ScreenSize::Height), 1.0, LargestFitting);
    return (QSizeF(ScreenSize::Width, ScreenSize::Height) * std::min(whole, fitting(display)))
        .toSize();
}

double ScreenScale::density()
{
    return windowsDensity > 0 ? windowsDensity : qGuiApp->devicePixelRatio();
}

double ScreenScale::canvasDensity()
{
    return std::max(1.0, density());
}

void ScreenScale::setDensity(double density)
{
    windowsDensity = density;
}
