#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/lang/languages.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"
#include "widgets/kwidget.h"
#include "widgets/menuitems.h"
#include "widgets/textinput.h"

#include <QLabel>

namespace
{

/// What a title and the text below it say.
struct Message {
    QString title;
    QString text;
};

/// The messages and questions of the program, with names as long as many are.
QList<Message> messages()
{
    const QString file = QStringLiteral("Holiday on the lake.jpeg");
    const QString path = QStringLiteral("/home/user/Pictures/") + file;
    return {{LANG_DELETE_DIR, path},
            {LANG_DELETE_FILE, path},
            {LANG_ERROR, LANG_UNABLE_DELETE},
            {LANG_MOVE_SURE, file + QStringLiteral(" to /home/user/Pictures")},
            {LANG_WARNING, QLatin1Char('"') + file + QStringLiteral("\" ") + LANG_COPY_EXISTS},
            {LANG_ERROR, LANG_DON_TRY_COPY},
            {LANG_ERROR, LANG_DON_TRY_MOVE},
            {LANG_ERROR, LANG_ERRORMOVE_HALF},
            {LANG_ERROR, LANG_RENAME_ERROR},
            {LANG_ERROR, LANG_RENAME_EXISTS},
            {LANG_ERROR, LANG_RENAME_DIREXISTS},
            {LANG_ERROR, LANG_NOT_EXEC},
            {LANG_ERROR, LANG_NO_EXTRAS},
            {LANG_ERROR, LANG_UPGRADED},
            {QStringLiteral("VNC"), withNumber(LANG_VNC_PORT, 65535)},
            {LANG_COPYING, LANG_PLEASE_WAIT},
            {LANG_MOVING, LANG_PLEASE_WAIT},
            {LANG_PROPERTIES, LANG_PLEASE_WAIT},
            {LANG_EXIT, LANG_EXIT_SURE}};
}

} // namespace

/// What the main window shows in each language, with the font and in the places that it has there.
class tst_ShownLanguages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        program_ = std::make_unique<Program>();
        program_->workFolder().makeLink("lang", QUARN_STAGE_DIR "/lang");
        lang = language;
        program_->start();
    }

    void cleanup() { program_.reset(); }

    void menusAreWhole_data() { addLanguages(); }
    void menusAreWhole()
    {
        pressKey(PhoneKey::SoftLeft);
        expectDrawn(*quarn->optionsMenu, {LANG_OPEN_WITH, LANG_DELETE, LANG_COPY_MENU, LANG_RENAME,
                                          LANG_MKDIR, LANG_BOOKMARK, LANG_BT, LANG_PROPERTIES});
        pressKey('0' + OptionsItem::CopyMenu);
        QVERIFY(quarn->copyMenu->isVisible());
        expectDrawn(*quarn->copyMenu, {LANG_COPY, LANG_MOVE, LANG_PASTE, LANG_PASTE_AS});
        pressKey(PhoneKey::SoftRight);
        pressKey('0' + OptionsItem::Bookmarks);
        QVERIFY(quarn->bookmarkMenu->isVisible());
        expectDrawn(*quarn->bookmarkMenu, {LANG_ADD_BOOKMARK});
    }

    void softKeysAreWhole_data() { addLanguages(); }
    void softKeysAreWhole()
    {
        expectDrawn(*quarn->softKey, {LANG_OPTIONS});
        pressKey(PhoneKey::SoftLeft);
        expectDrawn(*quarn->softKey, {LANG_SELECT, LANG_BACK});
    }

    void statusFitsTheBar_data() { addLanguages(); }
    void statusFitsTheBar()
    {
        for (const QString& text : {LANG_MARKED, LANG_TO_COPY, LANG_TO_MOVE}) {
            const QString status = withNumber(text, 1234);
            quarn->softKey->setStatus("folder", status);
            expectDrawn(*quarn->softKey, {LANG_OPTIONS, status});
        }
    }

    void emptyListSaysWhy_data() { addLanguages(); }
    void emptyListSaysWhy()
    {
        for (const QString& text : {LANG_NO_ENTRIES, LANG_CANNOT_READ}) {
            ZListBox list("%M", quarn, 0, ZSkinService::clsListBox);
            list.resize(quarn->panel(1)->size());
            list.setEmptyText(text);
            list.show();
            expectDrawn(list, {text});
        }
    }

    void answersFitTheBarOfABox_data() { addLanguages(); }
    void answersFitTheBarOfABox()
    {
        const QFontMetrics metrics(Box::textFont().font());
        for (const QString& answer : {LANG_YES, LANG_NO})
            QVERIFY2(metrics.horizontalAdvance(answer) <= Box::Width / 2, qPrintable(answer));
        QVERIFY(metrics.horizontalAdvance(LANG_CANCEL) <= Box::Width);
    }

    void boxesBreakBetweenWords_data() { addLanguages(); }
    void boxesBreakBetweenWords()
    {
        BoxFont titleFont = Box::titleFont();
        BoxFont textFont = Box::textFont();
        constexpr qsizetype MaxTitleLines = 2;
        for (const Message& message : messages()) {
            const QStringList title = titleFont.wrapped(message.title, Box::TextWidth).texts;
            QVERIFY2(title.size() <= MaxTitleLines, qPrintable(message.title));
            QVERIFY2(isBrokenBetweenWords(title, message.title), qPrintable(message.title));
            // Paths are long words.
            if (!message.text.contains(QLatin1Char('/')))
                QVERIFY2(isBrokenBetweenWords(textFont.wrapped(message.text, Box::TextWidth).texts,
                                              message.text),
                         qPrintable(message.text));
        }
    }

    void boxesStayOnTheScreen_data() { addLanguages(); }
    void boxesStayOnTheScreen()
    {
        for (const Message& message : messages()) {
            textView->showText(message.title, message.text, Qt::AlignHCenter, "res/img/warning.png",
                               kWidget::Message);
            textView->paintNow();
            QVERIFY2(ZScreen::instance()->rect().contains(textView->geometry()),
                     qPrintable(message.text));
            textView->init();
        }
    }

    void propertiesHaveALineEach_data() { addLanguages(); }
    void propertiesHaveALineEach()
    {
        BoxFont font = Box::textFont();
        const QStringList lines{
            LANG_TYPE + ": " + LANG_FOLDER,  LANG_TYPE + ": " + LANG_FILE,
            LANG_TYPE + ": " + LANG_SYMLINK, LANG_TYPE + ": " + LANG_UNK,
            LANG_NAME + ": picture.jpeg",    LANG_PATH + ": /home/user",
            LANG_SIZE + ": 12.3 Mb",         LANG_DIRS + ": 12 | " + LANG_FILES + ": 345",
            LANG_OWNER + ": user",           LANG_PERM + ": rw-rw-r--"};
        for (const QString& line : lines)
            QCOMPARE(font.wrapped(' ' + line, Box::TextWidth).texts.size(), 1);
    }

    void textDialogIsWhole_data() { addLanguages(); }
    void textDialogIsWhole()
    {
        TextInput* input = quarn->textInput;
        const QList<Message> prompts{{LANG_RENAME, LANG_RENAME + " \"a.jpeg\":"},
                                     {LANG_MKDIR, LANG_ENTER_DIRNAME},
                                     {LANG_BOOKMARK, LANG_ADD_BOOKMARK + ':'}};
        for (const Message& each : prompts) {
            once([input] { return input->isRunning() && input->isVisible(); },
                 [&each, input] {
                     const QStringList texts{each.title, each.text, LANG_YES, LANG_NO};
                     expectDrawn(*input->findChild<QLabel*>(), texts);
                     expectDrawn(*quarn->softKey, {LANG_YES, LANG_NO});
                     pressKey(PhoneKey::Modifier);
                     int menus = 0;
                     for (auto* menu : ZScreen::instance()->findChildren<ZOptionsMenu*>()) {
                         if (!menu->isVisible())
                             continue;
                         ++menus;
                         expectDrawn(*menu, {LANG_COPY, LANG_PASTE});
                     }
                     QCOMPARE(menus, 1);
                     pressKey(PhoneKey::SoftRight);
                     pressKey(PhoneKey::SoftRight);
                 });
            input->showText(each.title, each.text, "res/img/rename.png");
            QVERIFY(!QTest::currentTestFailed());
        }
    }

private:
    std::unique_ptr<Program> program_;
};

QUARN_TEST_MAIN(tst_ShownLanguages)
#include "tst_shownlanguages.moc"
