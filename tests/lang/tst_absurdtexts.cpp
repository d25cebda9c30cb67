#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "plugins/desktop/desktopwindow.h"
#include "plugins/support/notice.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"
#include "sharing/sharedevicelist.h"
#include "sharing/sharetexts.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/lang/filetexts.h"
#include "tests/lang/languages.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"
#include "widgets/menuitems.h"
#include "widgets/textinput.h"

#include <QLabel>

#include <algorithm>

/// A language file whose every text is far too long: what does not fit ends in an ellipsis, and
/// nothing is painted over what stands beside it.
class tst_AbsurdTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, text);
        program_ = std::make_unique<Program>();
        QByteArray content = "[Language]\nVER = 102\n";
        for (const FileText& each : FileTexts)
            content += QByteArray(each.key) + " = " + text.toUtf8() + '\n';
        program_->workFolder().write("lang/absurd.lang", content);
        lang = "absurd";
        program_->start();
        loadPluginTexts(program_->workFolder().path("lang/absurd.lang"));
        ShareTexts::load(program_->workFolder().path("lang/absurd.lang"));
    }

    void cleanup()
    {
        program_.reset();
        loadPluginTexts(QString());
    }

    void menusKeepToTheirRows_data() { addTexts(); }
    void menusKeepToTheirRows()
    {
        pressKey(PhoneKey::SoftLeft);
        expectElided(*quarn->optionsMenu, quarn->optionsMenu->count());
        pressKey('0' + OptionsItem::CopyMenu);
        expectElided(*quarn->copyMenu, quarn->copyMenu->count());
    }

    void softKeysShareTheBar_data() { addTexts(); }
    void softKeysShareTheBar()
    {
        expectElided(*quarn->softKey, 1);
        pressKey(PhoneKey::SoftLeft);
        expectElided(*quarn->softKey, 2);
    }

    void statusThatHasNoRoomIsLeftOut_data() { addTexts(); }
    void statusThatHasNoRoomIsLeftOut()
    {
        quarn->softKey->setStatus("folder", LANG_MARKED);
        expectElided(*quarn->softKey, 1);
        quarn->softKey->setText(ZSoftKey::Left, "Go");
        QCOMPARE(textsDrawnBy(*quarn->softKey).size(), 1);
    }

    void emptyListKeepsToItsPlace_data() { addTexts(); }
    void emptyListKeepsToItsPlace()
    {
        ZListBox list("%M", quarn, 0, ZSkinService::clsListBox);
        list.resize(ZScreen::Width, 200);
        list.setEmptyText(LANG_NO_ENTRIES);
        list.show();
        const QList<DrawnText> drawn = textsDrawnBy(list);
        QVERIFY(!drawn.isEmpty());
        QCOMPARE(misplaced(drawn, list.rect()), QString());
    }

    void answersOfABoxShareItsBar_data() { addTexts(); }
    void answersOfABoxShareItsBar()
    {
        const QSize bar(Box::Width, Box::KeyBarHeight);
        const BoxFont font = Box::textFont();
        for (const QStringList& words :
             {QStringList{LANG_YES, LANG_NO}, QStringList{LANG_CANCEL}}) {
            const auto drawn = textsDrawnOn(
                bar, [&](QPainter& painter) { Box::drawKeyBar(painter, font, 0, words); });
            expectElided(drawn, QRectF(QPointF(), bar), int(words.size()));
        }
    }

    void textDialogKeepsToItsPage_data() { addTexts(); }
    void textDialogKeepsToItsPage()
    {
        TextInput* input = quarn->textInput;
        const auto act = [input] {
            auto* page = input->findChild<QLabel*>();
            // A page that is too high is scrolled, so nothing is cut at its foot.
            const QList<DrawnText> drawn = textsDrawnBy(*page);
            QVERIFY(drawn.size() >= 4);
            QCOMPARE(misplaced(drawn, page->rect()), QString());
            QVERIFY(page->height() >= drawn.last().area.bottom());
            pressKey(PhoneKey::SoftRight);
        };
        once([input] { return input->isRunning() && input->isVisible(); }, act);
        input->showText(LANG_RENAME, LANG_RENAME + " \"a.txt\":", "res/img/rename.png");
    }

    void titlesKeepToTheHeader_data() { addTexts(); }
    void titlesKeepToTheHeader()
    {
        PluginWindow window("Plugin");
        window.show();
        window.setSoftKeyTexts(pluginTexts().zoom, pluginTexts().exit);
        window.showTitle("a.txt", pluginTexts().running);
        const QList<DrawnText> drawn = textsDrawnBy(window);
        QCOMPARE(misplaced(drawn, window.rect()), QString());
        const QString title = window.mainWidgetTitle();
        QVERIFY(title.startsWith("a.txt · " + pluginTexts().running.left(1)));
        QVERIFY(title.endsWith(QChar(0x2026)));
        QCOMPARE(drawn.size(), 3);
    }

    void noticesKeepToTheirPlace_data() { addTexts(); }
    void noticesKeepToTheirPlace()
    {
        const QRect place(10, 20, 200, 100);
        const auto drawn = textsDrawnOn({240, 320}, [&](QPainter& painter) {
            paintNotice(painter, place, pluginTexts().notAPicture);
        });
        QVERIFY(drawn.size() > 2);
        expectElided(drawn, place, 1);
    }

    void whatHandsOverKeepsToItsPage_data() { addTexts(); }
    void whatHandsOverKeepsToItsPage()
    {
        DesktopWindow window("a.pdf", Handover::NoProgram);
        window.show();
        // The problem and the advice, and the key that ends it.
        expectElided(window, 3);
    }

    void deviceListKeepsToItsRows_data() { addTexts(); }
    void deviceListKeepsToItsRows()
    {
        ShareDeviceList list("song.mp3", QApplication::font());
        list.show();
        list.setDevices({{"/a", "11:22:33:44:55:66", "Laptop", true}}, false);
        const QList<DrawnText> drawn = textsDrawnBy(list);
        QCOMPARE(misplaced(drawn, list.rect()), QString());
        QVERIFY(isDrawn(drawn, "11:22:33:44:55:66"));
        // The title, the word behind the address, the two keys; of the line below, the middle.
        const auto elided = int(std::count_if(drawn.begin(), drawn.end(), isElided));
        QCOMPARE(elided, 4);
    }

private:
    static void addTexts()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("a word") << QString(400, 'W');
        QTest::newRow("many words") << QString("WWW ").repeated(100) + "W";
        QTest::newRow("a word of another script") << QString(200, QChar(0x56fd));
    }

    static bool isElided(const DrawnText& drawn) { return drawn.text.endsWith(QChar(0x2026)); }

    static void expectElided(const QList<DrawnText>& drawn, const QRectF& frame, int count)
    {
        QCOMPARE(misplaced(drawn, frame), QString());
        QCOMPARE(int(std::count_if(drawn.begin(), drawn.end(), isElided)), count);
    }

    static void expectElided(QWidget& widget, int count)
    {
        expectElided(textsDrawnBy(widget), widget.rect(), count);
    }

    std::unique_ptr<Program> program_;
};

QUARN_TEST_MAIN(tst_AbsurdTexts)
#include "tst_absurdtexts.moc"
