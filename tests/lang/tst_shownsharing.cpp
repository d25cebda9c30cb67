#include "sharing/sharebox.h"
#include "sharing/sharedevicelist.h"
#include "sharing/sharetexts.h"
#include "tests/lang/languages.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"

#include <memory>

/// What the sharing screens show in each language, with the font and in the places that it has
/// there.
class tst_ShownSharing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void init()
    {
        QFETCH(QString, language);
        main_ = showMainWidget();
        ShareTexts::load(stagedLanguageFile(language));
    }

    void cleanup() { main_.reset(); }

    void listIsWhole_data() { addLanguages(); }
    void listIsWhole()
    {
        const ShareTexts& texts = ShareTexts::instance();
        ShareDeviceList list("song.mp3", QApplication::font());
        list.show();
        expectDrawn(list, {texts.title, "song.mp3", texts.searching, texts.cancel});
        list.setDevices({}, false);
        expectDrawn(list, {texts.title, texts.noDevices, texts.cancel});
        list.setDevices({{"/a", "11:22:33:44:55:66", "Laptop", true}}, false);
        expectDrawn(list, {texts.title, "Laptop", "11:22:33:44:55:66", texts.paired, texts.devices,
                           texts.send, texts.cancel});
    }

    void boxBreaksBetweenWordsAndStaysOnTheScreen_data() { addLanguages(); }
    void boxBreaksBetweenWordsAndStaysOnTheScreen()
    {
        const ShareTexts& texts = ShareTexts::instance();
        BoxFont titleFont = Box::titleFont();
        BoxFont textFont = Box::textFont();
        QVERIFY(titleFont.wrapped(texts.title, Box::TextWidth).texts.size() <= 2);
        QVERIFY(QFontMetrics(textFont.font()).horizontalAdvance(texts.cancel) <= Box::Width);
        ShareBox box;
        for (QString text : {texts.connecting, texts.sending, texts.sent, texts.refused,
                             texts.cancelled, texts.failed, texts.lost}) {
            text.replace("%1", "song.mp3").replace("%2", "Laptop");
            QVERIFY2(isBrokenBetweenWords(textFont.wrapped(text, Box::TextWidth).texts, text),
                     qPrintable(text));
            box.showProgress(text, 1, 2);
            QVERIFY2(ZScreen::instance()->rect().contains(box.geometry()), qPrintable(text));
        }
    }

    void sizesAreWhole_data() { addLanguages(); }
    void sizesAreWhole()
    {
        const ShareTexts& texts = ShareTexts::instance();
        constexpr qint64 Kilo = 1024;
        ShareBox box;
        const auto expectSizes = [&box](qint64 size, const QString& sizes) {
            box.showProgress("song.mp3", size, size);
            expectDrawn(box, {"100%  " + sizes + " / " + sizes});
        };
        expectSizes(1000, "1000 " + texts.bytes);
        expectSizes(1000 * Kilo, "1000.0 " + texts.kilobytes);
        expectSizes(1000 * Kilo * Kilo, "1000.0 " + texts.megabytes);
        expectSizes(1000 * Kilo * Kilo * Kilo, "1000.0 " + texts.gigabytes);
    }

private:
    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ShownSharing)
#include "tst_shownsharing.moc"
