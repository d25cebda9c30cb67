// quarn-keys: asks for the keys of this device and writes keymap.cfg.

#include "files/entry.h"
#include "files/linktext.h"
#include "files/names.h"
#include "files/paths.h"
#include "plugins/support/pluginapp.h"
#include "plugins/support/plugintexts.h"
#include "tools/quarn_keys/keyswindow.h"

#include <cstdio>
#include <cstring>

namespace
{

constexpr int WrongUsage = 2;

int usage(std::FILE* stream, int status)
{
    std::fputs("usage: quarn-keys [FOLDER]\n"
               "Asks for the keys of this device and writes keymap.cfg in FOLDER, Quarn's work\n"
               "folder; without one it is the folder above that of this program.\n",
               stream);
    return status;
}

/// Ends with "/"; empty if a text names no folder.
QString folderOf(const QString& path)
{
    const QString whole = absolutePath(path);
    if (!EntryInfo(whole).isFolder())
        return {};
    return whole.endsWith(QLatin1Char('/')) ? whole : whole + QLatin1Char('/');
}

/// The folder above bin/ through which the program was started, which may be a link, if that is a
/// work folder; else above where the program lies.
QString workFolder(const QString& startedAs)
{
    for (const QString& program : {startedAs, linkText(QStringLiteral("/proc/self/exe"))}) {
        const QString folder = folderPart(absolutePath(folderPart(program)));
        if (program.contains(QLatin1Char('/')) && entryExists(folder + QStringLiteral("fm.cfg")))
            return folder;
    }
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0))
        return usage(stdout, 0);
    // Those of the toolkit come with a value each.
    const bool hasFolder = argc > 1 && argv[1][0] != '-';
    const QString folder =
        hasFolder ? folderOf(decodeName(argv[1])) : workFolder(decodeName(argv[0]));
    if (folder.isEmpty()) {
        std::fprintf(stderr, "quarn-keys: %s\n",
                     hasFolder ? "no such folder" : "no fm.cfg beside bin/; name the work folder");
        return usage(stderr, WrongUsage);
    }
    PluginApp app(argc, argv, QStringLiteral("Quarn"), folder);
    KeysWindow window(folder + QStringLiteral("keymap.cfg"));
    return app.run(window);
}
