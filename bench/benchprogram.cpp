#include "bench/benchprogram.h"

#include "browser/filebrowserftab.h"
#include "shell/fm.h"
#include "shell/qdaemonapp.h"
#include "shell/settings.h"
#include "shell/util.h"
#include "widgets/kwidget.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Memory rather than a disk, so that what is compared is the work and not the medium.
QString placeForFiles()
{
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) +
           QStringLiteral("/quarn-bench-XXXXXX");
}

} // namespace

BenchProgram::BenchProgram(int argc, char** argv)
    : application_(std::make_unique<QDaemonApp>(argc, argv)), files_(placeForFiles())
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    a = application_.get();
    u = new util;
    QFile::link(QStringLiteral(QUARN_STAGE_DIR "/res"), work(QStringLiteral("res")));
    work_folder = workFolder_.path() + QLatin1Char('/');
    path_tab1 = files_.path();
    path_tab2 = files_.path();
}

BenchProgram::~BenchProgram()
{
    delete quarn;
    delete textView;
    delete processView;
    delete u;
}

FM* BenchProgram::start()
{
    quarn = new FM;
    a->setMainWidget(quarn);
    quarn->show();
    while (processView->isUp()) {
        ZApplication::processEvents();
        processView->aniUpdate();
    }
    return quarn;
}

void BenchProgram::highlight(const QString& name) const
{
    for (const int page : {1, 2})
        quarn->panel(page)->setDir(files_.path(), 0);
    FileBrowserFtab* panel = quarn->panel(1);
    for (int row = 0; row < panel->count(); ++row) {
        if (panel->item(row)->getSubItemText(1, 0) == name)
            panel->setCurrentItem(row);
    }
}

void makeTree(const QString& path, int folders, int files, int bytes)
{
    const QByteArray content(bytes, 'x');
    QDir().mkpath(path);
    for (int folder = 0; folder < folders; ++folder) {
        const QByteArray name = QFile::encodeName(path) + "/folder" + QByteArray::number(folder);
        mkdir(name.constData(), 0755);
        for (int i = 0; i < files; ++i) {
            const QByteArray file = name + "/file" + QByteArray::number(i);
            const int made = open(file.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
            if (write(made, content.constData(), size_t(bytes)) != bytes)
                qFatal("cannot write %s", file.constData());
            close(made);
        }
    }
}

double peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024;
}
