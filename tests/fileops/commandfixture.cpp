#include "tests/fileops/commandfixture.h"

#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/keys.h"
#include "tests/widgets/boxtesting.h"
#include "widgets/kwidget.h"

#include <QApplication>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

namespace
{

QString inFolder(const QString& folder, const QString& name)
{
    return name.isEmpty() ? folder : folder + QLatin1Char('/') + name;
}

/// Goes down in the open menu and chooses.
void chooseBelow(int steps)
{
    for (int i = 0; i < steps; ++i)
        pressKey(PhoneKey::Down);
    pressKey(PhoneKey::Return);
}

} // namespace

CommandFixture::CommandFixture(ScratchFolder::Medium medium) : program_(medium)
{
    files().makeFolder(QStringLiteral("left"));
    files().makeFolder(QStringLiteral("right"));
    path_tab1 = left();
    path_tab2 = right();
}

QString CommandFixture::left(const QString& name) const
{
    return inFolder(files().path(QStringLiteral("left")), name);
}

QString CommandFixture::right(const QString& name) const
{
    return inFolder(files().path(QStringLiteral("right")), name);
}

void CommandFixture::write(int page, const QStringList& names) const
{
    const QString prefix = page == 1 ? QStringLiteral("left/") : QStringLiteral("right/");
    for (const QString& name : names)
        files().write(prefix + name, name.toUtf8());
}

FM* CommandFixture::start(int page)
{
    FM* window = program_.start();
    log_.watch(*window);
    goTo(page);
    // Without a mover of its own, wherever the test was started.
    window->programDir = program_.workFolder().path() + QLatin1Char('/');
    log_.take();
    return window;
}

FM* CommandFixture::startWith(CopyItem item, const QString& name)
{
    write(1, {name});
    FM* window = start();
    toClipboard(item, name, 2);
    return window;
}

void CommandFixture::goTo(int page) const
{
    while (window()->activePage() != page)
        pressKey(PhoneKey::Right);
}

void CommandFixture::highlight(const QString& name) const
{
    program_.highlight(window()->activePage(), name);
}

void CommandFixture::mark(const QStringList& names)
{
    pressKey('0');
    for (const QString& name : names) {
        highlight(name);
        pressKey(PhoneKey::Return);
    }
    log_.take();
}

void CommandFixture::choose(Option item)
{
    pressKey(PhoneKey::SoftLeft);
    chooseBelow(item - 1);
}

void CommandFixture::choose(CopyItem item)
{
    choose(CopyMenu);
    chooseBelow(item - 1);
}

void CommandFixture::toClipboard(CopyItem item, const QString& name, int thenGoTo)
{
    highlight(name);
    choose(item);
    goTo(thenGoTo);
    log_.take();
}

void CommandFixture::paste(std::initializer_list<CommandLog::Action> answers)
{
    log_.expect(answers);
    choose(Paste);
}

bool CommandFixture::showsPleaseWait(const QString& title)
{
    kWidget expected;
    expected.showText(title, LANG_PLEASE_WAIT, 4, QStringLiteral("res/img/copy.png"),
                      kWidget::Plain);
    return hasKeys(*textView) && looksLike(*textView, expected);
}

void CommandFixture::dismissError(const QString& text) const
{
    QCOMPARE(textView->shownTitle(), LANG_ERROR);
    QCOMPARE(textView->shownText(), text);
    dismissMessage();
}

void CommandFixture::dismissMessage() const
{
    QTRY_COMPARE(keyReceiver(), textView);
    QVERIFY(!textView->isWaiting());
    pressKey(PhoneKey::Return);
    QVERIFY(!textView->isUp());
    QCOMPARE(keyReceiver(), window()->activePanel());
}

QStringList CommandFixture::bothListed() const
{
    return {CommandLog::listed(panel(1)->curPath), CommandLog::listed(panel(2)->curPath)};
}

void CommandFixture::installMover()
{
    const QString mover = QStringLiteral("bin/sys_gui");
    program_.workFolder().write(mover, "#!/bin/sh\nprintf '%s\\0' \"$@\" > \"${0%/*}/noted\"\n");
    program_.workFolder().setMode(mover, 0755);
}

QByteArrayList CommandFixture::moverArguments() const
{
    QByteArrayList arguments = program_.workFolder().read(QStringLiteral("bin/noted")).split('\0');
    arguments.removeLast();
    return arguments;
}

void addPages()
{
    QTest::addColumn<int>("page");
    QTest::newRow("first panel") << 1;
    QTest::newRow("second panel") << 2;
}

void addFileAndFolder()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void addReplacements()
{
    QTest::addColumn<bool>("folderThere");
    QTest::addColumn<bool>("folderHere");
    for (const bool there : {false, true}) {
        for (const bool here : {false, true})
            QTest::addRow("%s replaces %s", there ? "folder" : "file", here ? "folder" : "file")
                << there << here;
    }
}

void addOddNames()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("works");
    QTest::newRow("line break inside") << "a\nb" << true;
    QTest::newRow("line break") << "\n" << true;
    QTest::newRow("beyond ASCII") << QString::fromUtf8("Gr\u00fc\u00dfe \u041f\u0440 \u65e5")
                                  << true;
    QTest::newRow("beyond 16 bits") << QString::fromUtf8("\U0001F600") << true;
    QTest::newRow("255 bytes") << QString(255, 'x') << true;
    QTest::newRow("255 bytes in long letters") << QString(127, QChar(0x0416)) + 'x' << true;
    for (const char* name :
         {"%1", "%2", "a %1 %2 %% b", "-rf", "--help", "-", " ", " blanks ",
          "tab\tand 'single' quotes", "* ? [a-z] {a,b} ~ ; & | < > ( ) # !", "a\\b", "costs 5$"})
        QTest::newRow(name) << QString::fromLatin1(name) << true;
    for (const char* name : {"say \"hi\" twice", "$HOME-is-not-this", "${HOME}", "`true`x",
                             "$(true)x", "a\\$b", "a\\\\b", "a\\"})
        QTest::newRow(name) << QString::fromLatin1(name) << false;
}

void addTypedNames()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"%1", "%2 %%", "-rf", " ", " blanks ", "say \"hi\"", "$HOME", "`true`",
                             "a\\b", ".hidden", "0*#"})
        QTest::newRow(name) << QString::fromLatin1(name);
    QTest::newRow("beyond ASCII") << QString::fromUtf8("Gr\u00fc\u00dfe \u041f\u0440 \u65e5");
    QTest::newRow("255 bytes") << QString(255, 'x');
}

bool isFifo(const QString& path)
{
    struct stat info = {};
    return lstat(QFile::encodeName(path).constData(), &info) == 0 && S_ISFIFO(info.st_mode);
}

qsizetype menuCount()
{
    return ZScreen::instance()->findChildren<ZOptionsMenu*>().size();
}

QString replaceQuestion(const QString& name)
{
    return CommandLog::question(LANG_WARNING, '"' + name + QStringLiteral("\" ") + LANG_COPY_EXISTS,
                                QStringLiteral("warning"));
}

QString removal(const QString& path)
{
    return CommandLog::shell("rm -f -r \"" + path.toUtf8() + '"');
}

QString removalError()
{
    return CommandLog::message(LANG_ERROR, LANG_UNABLE_DELETE, QStringLiteral("error"));
}

void yes()
{
    pressKey(PhoneKey::SoftLeft);
}

void no()
{
    pressKey(PhoneKey::SoftRight);
}

void typeText(const QString& text)
{
    for (const QChar character : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
        QApplication::sendEvent(keyReceiver(), &press);
        QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(character));
        QApplication::sendEvent(keyReceiver(), &release);
    }
}

void eraseText()
{
    pressKey(0x1000 + (Qt::Key_Delete & 0xff));
}

CommandLog::Action typing(const QString& text)
{
    return [text] {
        text.isEmpty() ? eraseText() : typeText(text);
        yes();
    };
}
