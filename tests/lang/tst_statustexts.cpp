#include "lang/texts.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "tests/lang/languages.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

/// The installed languages' texts of the status in the soft-key bar, in the bar.
class tst_StatusTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void theyFitBesideTheOptions_data() { addLanguages(); }
    void theyFitBesideTheOptions()
    {
        QFETCH(QString, language);
        loadTexts(stagedLanguageFile(language));
        const auto window = showMainWidget();
        window->setFont(ZSkinService::font(QStringLiteral("ZarnikFont"), 14, 25));
        ZSoftKey bar(QString(), window.get(), window.get());
        bar.setGeometry(0, 300, 240, 20);
        bar.setText(ZSoftKey::Left, LANG_OPTIONS);
        for (const QString& text : {LANG_MARKED, LANG_TO_COPY, LANG_TO_MOVE}) {
            const QString most = withNumber(text, 9999);
            bar.setStatus(QString(), most);
            QCOMPARE(bar.shownStatus().last(), most);
            // Of a few there is room for a name, too.
            const QString few = withNumber(text, 12);
            bar.setStatus("Music", few);
            QVERIFY2(!bar.shownStatus().first().isEmpty(), qPrintable(few));
        }
    }
};

QUARN_TEST_MAIN(tst_StatusTexts)
#include "tst_statustexts.moc"
