#include "extras/operationtexts.h"
#include "extras/trashpage.h"
#include "extras/trashwords.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "tests/lang/shownsafe.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"

#include <sys/stat.h>

#include <cerrno>
#include <memory>

/// What the screens of the trash show in each language, with the font and in the places that it has
/// there.
class tst_ShownTrash : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        main_ = mainWidgetForSafe(language);
    }

    void cleanup() { main_.reset(); }

    void listAndMenuAreWhole_data() { addLanguages(); }
    void listAndMenuAreWhole()
    {
        const SafeTexts& texts = SafeTexts::instance();
        TrashPage page;
        page.show();
        page.setEntries({});
        expectDrawn(page, {texts.trash, texts.trashEmpty, LANG_BACK});
        page.setEntries({entry("/here/song.mp3"), entry({})});
        expectDrawn(page, {texts.trash, "song.mp3", "/here", deletedText(entry("/here/song.mp3")),
                           texts.unknownPlace, LANG_OPTIONS, LANG_BACK});
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(page.menu()->isVisible());
        expectDrawn(*page.menu(),
                    {texts.restore, texts.deleteForGood, texts.emptyTrash, LANG_PROPERTIES});
    }

    void choiceOfAPlaceThatIsTakenIsWhole_data() { addLanguages(); }
    void choiceOfAPlaceThatIsTakenIsWhole()
    {
        const SafeTexts& texts = SafeTexts::instance();
        EntryPage page(texts.restore);
        page.setLines({filledText(texts.placeTaken, "song.mp3")});
        page.setRows({{texts.replace, texts.otherToTrash, {}}}, true);
        page.show();
        expectDrawn(page, {texts.restore, filledText(texts.placeTaken, "song.mp3"),
                           "1  " + texts.replace, texts.otherToTrash});
    }

    void reasonsAreWhole_data() { addLanguages(); }
    void reasonsAreWhole()
    {
        EntryPage page(SafeTexts::instance().trash);
        page.show();
        for (const TrashFailure& failure : {TrashFailure{"/a", Trash::Outcome::Refused, 0},
                                            TrashFailure{"/a", Trash::Outcome::NoTrash, 0},
                                            TrashFailure{"/a", Trash::Outcome::Gone, 0},
                                            TrashFailure{"/a", Trash::Outcome::Failed, EXDEV}}) {
            page.setRows({{"song.mp3", reasonText(failure), {}}});
            expectDrawn(page, {reasonText(failure)});
        }
    }

    void questionsBreakBetweenWords_data() { addLanguages(); }
    void questionsBreakBetweenWords()
    {
        const SafeTexts& texts = SafeTexts::instance();
        BoxFont titleFont = Box::titleFont();
        for (const QString& title :
             {texts.toTrash, texts.movingToTrash, texts.forGood, texts.emptyAsk, texts.restore}) {
            const QStringList lines = titleFont.wrapped(title, Box::TextWidth).texts;
            QVERIFY2(lines.size() <= 2, qPrintable(title));
            QVERIFY2(isBrokenBetweenWords(lines, title), qPrintable(title));
        }
        BoxFont textFont = Box::textFont();
        for (const QString& text :
             {texts.noTrash, texts.unknownPlace, texts.restoreHere, texts.notAllDeleted}) {
            const QStringList lines = textFont.wrapped(text, Box::TextWidth).texts;
            QVERIFY2(isBrokenBetweenWords(lines, text), qPrintable(text));
        }
        QCOMPARE(textFont.wrapped(filledText(texts.deletedOn, "22/11/2026 13:26"), Box::TextWidth)
                     .texts.size(),
                 1);
    }

private:
    static TrashEntry entry(const QByteArray& path)
    {
        TrashEntry result;
        result.trash = "/trash";
        result.name = "song.mp3";
        result.path = path;
        result.deleted = path.isEmpty() ? 0 : 1700000000;
        result.bytes = 1234567;
        result.mode = S_IFREG | 0644;
        return result;
    }

    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ShownTrash)
#include "tst_showntrash.moc"
