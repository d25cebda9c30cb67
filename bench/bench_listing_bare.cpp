// A bare list view with the names of a folder: prints the memory of the process in MiB.

#include "bench/residentmemory.h"

#include <QApplication>
#include <QListView>
#include <QStringListModel>

#include <dirent.h>

namespace
{

QStringList namesIn(const char* path)
{
    QStringList names;
    DIR* folder = opendir(path);
    while (const dirent* entry = folder != nullptr ? readdir(folder) : nullptr)
        names.append(QString::fromUtf8(entry->d_name));
    if (folder != nullptr)
        closedir(folder);
    return names;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QStringListModel model(namesIn(argv[argc - 1]));
    QListView view;
    view.setUniformItemSizes(true);
    view.setModel(&model);
    view.resize(240, 320);
    view.show();
    view.repaint();
    QApplication::processEvents();
    std::printf("%.2f\n", residentMemory());
    return 0;
}
