#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "extras/openextras.h"
#include "files/paths.h"
#include "files/programnames.h"
#include "lang/texts.h"
#include "platform/qcopchannel.h"
#include "platform/vncdisplay.h"
#include "platform/zapplication.h"
#include "platform/znavtabwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "shell/afterstart.h"
#include "shell/qdaemonapp.h"
#include "shell/settings.h"
#include "shell/statusline.h"
#include "shell/upgradenotice.h"
#include "shell/util.h"
#include "shell/vncnotice.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QApplication>
#include <QDebug>
#include <QVBoxLayout>

FM* quarn = nullptr;

namespace
{

const char StartBanner[] = "\n"
                           "--------------------------\n"
                           "--------Quarn 1.6---------\n"
                           "-File manager for ROKR E2-\n"
                           "-------Written by --------\n"
                           "-----The Quarn team-------\n"
                           "-------21.11.2026---------\n"
                           "----quarn@quarn.example---\n"
                           "---https://quarn.example--\n"
                           "--------------------------\n";

} // namespace

FM::FM() : ZKbMainWidget(TitleUnderlined, nullptr, "ZMainWidget", {})
{
    qDebug("%s", StartBanner);
    setFont(ZSkinService::font(ProgramNames::Font, 14, 25));
    showStartBox();
    resize(ZScreen::Width, ZScreen::Height);
    qApp->installEventFilter(this);
    setMainWidgetTitle(ProgramNames::Program);
    programDir = u->getProgramDir();
    tabs_ = new ZNavTabWidget(1, false, false, this, nullptr, ZSkinService::clsNavTab);
    loadTables();
    setHeaderType(header_type);
    if (work_folder.isNull())
        work_folder = programDir;
    fullScreenModeChanged(full_scr);
    textView = new kWidget;
    textView->setFont(font());
    createTextInput();
    createPanels();
    createAboutPage();
    contentLayout()->addWidget(tabs_);
    createSoftKeys();
    createSoftKeysStab();
    setSoftKey(softKey);
    connectSignals();
    constexpr int LingerTicks = 10;
    processView->stop(LingerTicks);
}

FM::~FM()
{
    delete textInput;
    quarn = quarn == this ? nullptr : quarn;
}

void FM::showStartBox()
{
    processView = new kWidget;
    processView->setFont(font());
    processView->showProcess(QStringLiteral("Quarn starting"), QString(), 0,
                             QStringLiteral("Please wait.."), Qt::AlignHCenter,
                             QStringLiteral("res/img/open_with.png"), kWidget::Plain);
    processView->paintNow();
}

/// The order matters: while these are read, a work folder that the settings did not give is still
/// unset.
void FM::loadTables()
{
    LoadLang();
    qDebug("--- read lang ok");
    MimeConfig();
    qDebug("--- read mimes ok");
    PluginConfig();
    qDebug("--- read plugins ok");
    BookmarkConfig();
    qDebug("--- read bookmarks ok");
}

void FM::LoadLang()
{
    loadTexts(languageFile(work_folder, lang));
}

void FM::createTextInput()
{
    // The tabs move a menu's text past its icon.
    const QString indent = QStringLiteral("\t\t\t");
    textInput = new TextInput(work_folder);
    textInput->setFont(font());
    textInput->copyText = indent + LANG_COPY;
    textInput->pasteText = indent + LANG_PASTE;
    textInput->yesText = LANG_YES;
    textInput->noText = LANG_NO;
    textInput->Init();
}

void FM::createPanels()
{
    const QString starts[] = {path_tab1, path_tab2};
    for (int i = 0; i < 2; ++i) {
        panels_[i] = new FileBrowserFtab(full_inf, QStringLiteral("%I%M"), this, 0,
                                         ZSkinService::clsListBox);
        panels_[i]->setDir(starts[i], 0);
        if (extras.find)
            panels_[i]->enableFinding([this] { return modKeyHeld; });
    }
    addTab(panels_[0], "res/img/1.png");
    addTab(panels_[1], "res/img/2.png");
    panels_[0]->setFocus();
}

void FM::addTab(QWidget* page, const char* icon)
{
    QPixmap picture;
    loadPixmap(picture, work_folder + QLatin1String(icon));
    tabs_->addTab(page, picture, QString());
}

void FM::connectSignals()
{
    connect(tabs_, &ZNavTabWidget::currentChanged, this, &FM::slotCurrentChanged);
    channel_ = new QCopChannel(ProgramNames::Channel, this);
    connect(channel_, &QCopChannel::received, this, &FM::slotQCopReceived);
    connect(panels_[1], &FileBrowserFtab::isFilePicked, this, &FM::slot_ClickFile);
    connect(panels_[0], &FileBrowserFtab::isFilePicked, this, &FM::slot_ClickFile);
    connect(a, &ZApplication::signalRaise, this, &QWidget::show);
    connect(ZScreen::instance(), &ZScreen::closeRequested, this, &FM::slotCloseRequested);
    if (extras.status)
        new StatusLine(this);
    if (VncDisplay::isUsed())
        new VncNotice(this);
    if (const QString notice = takeNoticeFile(); !notice.isNull())
        new AfterStart(this, [] { return true; }, [notice] { showNotice(notice); });
    if (extras.safe || extras.trash)
        new AfterStart(this, hasUnfinished, [this] { offerUnfinished(); });
}

FileBrowserFtab* FM::panel(int page) const
{
    return page == Panel1 || page == Panel2 ? panels_[page - 1] : nullptr;
}

FileBrowserFtab* FM::activePanel() const
{
    return panel(activePage_);
}

QString FM::getFilePath(const QString& path)
{
    return folderPart(path);
}

QString FM::getFileName(const QString& path)
{
    return namePart(path);
}

QString FM::getActiveFileName() const
{
    const FileBrowserFtab* active = activePanel();
    return active != nullptr ? active->curFile : QString();
}

QStringList FM::getActiveFileNames()
{
    FileBrowserFtab* active = activePanel();
    if (active == nullptr)
        return {};
    const QStringList names = active->getChkFileList();
    active->switchMultiSelect();
    relist(active);
    return names;
}

QStringList FM::getActiveEntries()
{
    return getActiveMultiStat() ? getActiveFileNames() : QStringList{getActiveFileName()};
}

bool FM::getActiveMultiStat() const
{
    const FileBrowserFtab* active = activePanel();
    return active != nullptr && active->isMultiSelect();
}

void FM::relist(FileBrowserFtab* panel)
{
    panel->setDir(panel->curPath, panel->curIndex);
}

void FM::slotCurrentChanged([[maybe_unused]] QWidget* page)
{
    const int index = tabs_->currentPageIndex();
    if (index == 0 || index == 1) {
        softKey->setOptMenu(ZSoftKey::Left, optionsMenu);
        softKey->setText(ZSoftKey::Left, LANG_OPTIONS);
        activePage_ = index == 0 ? Panel1 : Panel2;
    } else if (index == 2) {
        softKey->setOptMenu(ZSoftKey::Left, nullptr);
        softKey->setText(ZSoftKey::Left, QString());
        activePage_ = AboutPage;
        aboutPage_->setFocus();
    }
}

void FM::CloseProgramm()
{
    // What is typed before the box is up must not reach the panel.
    const ZScreen::MainInputPause pause;
    if (textView->showText(LANG_EXIT, LANG_EXIT_SURE, Qt::AlignHCenter,
                           QStringLiteral("res/img/warning.png"), kWidget::Question) == 1)
        a->quit();
}

void FM::slotCloseRequested()
{
    if (textView->isWaiting())
        return;
    // A message that is still up makes way.
    textView->init();
    CloseProgramm();
}

void FM::slotQCopReceived(const QByteArray& message)
{
    if (message != "show()")
        return;
    show();
    a->slotRaise();
}
