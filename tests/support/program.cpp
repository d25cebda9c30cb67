#include "tests/support/program.h"

#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "browser/filebrowserftab.h"
#include "platform/zpixmap.h"
#include "shell/fm.h"
#include "shell/qdaemonapp.h"
#include "shell/settings.h"
#include "shell/util.h"
#include "widgets/kwidget.h"

#include <QCoreApplication>
#include <QTest>

Program::Program(ScratchFolder::Medium medium) : files_(medium)
{
    int count = 1;
    char name[] = "quarn";
    char* arguments[] = {name, nullptr};
    application_ = std::make_unique<QDaemonApp>(count, arguments);
    a = application_.get();
    u = new util;
    mimes.clear();
    mime_nums = 0;
    plugins.clear();
    plug_nums = 0;
    ZPixmapCache::clear();
    workFolder_.makeLink(QStringLiteral("res"), QStringLiteral(QUARN_STAGE_DIR "/res"));
    work_folder = workFolder_.path() + QLatin1Char('/');
    path_tab1 = files_.path();
    path_tab2 = files_.path();
    lang = QString();
    full_scr = false;
    header_type = 3;
    full_inf = false;
    extras = Extras();
}

Program::~Program()
{
    delete quarn;
    delete textView;
    delete processView;
    textView = nullptr;
    processView = nullptr;
    delete u;
    u = nullptr;
    a = nullptr;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

FM* Program::start()
{
    quarn = new FM;
    a->setMainWidget(quarn);
    quarn->show();
    // The start box lingers for some ticks of its clock, which the test need not wait for.
    while (processView->isUp()) {
        QCoreApplication::processEvents();
        processView->aniUpdate();
    }
    return quarn;
}

FM* Program::window() const
{
    return quarn;
}

FileBrowserFtab* Program::panel(int page) const
{
    return quarn->panel(page);
}

QStringList Program::rows(int page) const
{
    QStringList names;
    for (int row = 0; row < panel(page)->count(); ++row)
        names.append(panel(page)->item(row)->getSubItemText(1, 0));
    return names;
}

void Program::highlight(int page, const QString& name) const
{
    const int row = int(rows(page).indexOf(name));
    QVERIFY2(row >= 0, qPrintable(name));
    panel(page)->setCurrentItem(row);
}
