// From a key press to what is painted for it while an entry of a large folder is being found:
// beside a frame of a display, and beside a press of the key Down in the same list.

#include "bench/benchprogram.h"
#include "bench/paintwatch.h"
#include "bench/stopwatch.h"
#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "shell/settings.h"

#include <QDir>

#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int Entries = 100000;
constexpr int Runs = 51;

void press(int code)
{
    pressIn(ZScreen::instance()->active()->focusWidget(), code);
}

/// Makes a folder of empty files: of the first name with a number in it, and of the second.
void makeFiles(const QString& folder, const char* pattern, const char* last)
{
    QDir().mkpath(folder);
    const auto make = [&folder](const QString& name) {
        const QByteArray path = (folder + QLatin1Char('/') + name).toUtf8();
        close(open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    };
    for (int i = 0; i < Entries; ++i)
        make(QString::asprintf(pattern, i));
    make(QString::fromUtf8(last));
}

struct Times {
    double median;
    double longest;
};

/// From the press of a key in the first row to the list painted with what it does, if `ended` then
/// by the clear key.
Times pressToPaint(FileBrowserFtab* panel, int key, bool ended)
{
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        panel->setCurrentItem(0);
        QCoreApplication::processEvents();
        PaintWatch watch(panel->viewport());
        times.push_back(millisecondsOf([&] {
            press(key);
            watch.wait();
        }));
        if (ended)
            press(PhoneKey::Clear);
        QCoreApplication::processEvents();
    }
    std::sort(times.begin(), times.end());
    return {times.at(times.size() / 2), times.back()};
}

struct Search {
    const char* what;
    char16_t key;
};

void benchFolder(FileBrowserFtab* panel, const QString& folder, const std::vector<Search>& searches)
{
    panel->setDir(folder, 0);
    const double step = pressToPaint(panel, PhoneKey::Down, false).median;
    for (const Search& search : searches) {
        const Times times = pressToPaint(panel, search.key, true);
        printRow(search.what, times.median, "ms", "key Down to painted row", step);
        printRow("  the slowest of them", times.longest, "ms", "one frame", FrameMilliseconds);
    }
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    BenchProgram program(argc, argv);
    const QString latin = program.file(QStringLiteral("latin"));
    const QString cyrillic = program.file(QStringLiteral("cyrillic"));
    makeFiles(latin, "file %06d of some.txt", "zebra.txt");
    makeFiles(cyrillic, "Заметка %06d о том.txt", "Ящик.txt");
    extras.find = true;
    FileBrowserFtab* panel = program.start()->panel(1);
    benchFolder(panel, latin,
                {{"find: letter of the next name", u'f'},
                 {"find: letter of the last of 100000 names", u'z'},
                 {"find: digit of the last of 100000 names", u'9'},
                 {"find: letter that no word begins with", u'q'}});
    benchFolder(panel, cyrillic,
                {{"find: letter of the last of 100000 in Cyrillic", u'я'},
                 {"find: Cyrillic letter that no word begins with", u'щ'},
                 {"find: Cyrillic letter inside words alone", u'к'}});
    return 0;
}
