#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "shell/settings.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/testmain.h"

/// What a panel says where there is nothing to list.
class tst_EmptyList : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { loadTexts(QString()); }
    void init() { extras.status = true; }
    void cleanup() { extras = Extras(); }

    void saysWhyThereIsNothing_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("rows");
        QTest::newRow("entries") << "full"
                                 << "" << 2;
        QTest::newRow("hidden entries") << "hidden"
                                        << "" << 2;
        QTest::newRow("none") << "empty"
                              << "No entries" << 1;
        QTest::newRow("may not be read") << "locked"
                                         << "Cannot be read" << 0;
        QTest::newRow("is not there") << "missing"
                                      << "Cannot be read" << 0;
        QTest::newRow("is no folder") << "full/file"
                                      << "Cannot be read" << 0;
    }

    void saysWhyThereIsNothing()
    {
        QFETCH(QString, folder);
        QFETCH(QString, text);
        const PanelFixture panel;
        panel.files().write(QStringLiteral("full/file"));
        panel.files().write(QStringLiteral("hidden/.file"));
        panel.files().makeFolder(QStringLiteral("empty"));
        panel.files().makeFolder(QStringLiteral("locked"));
        panel.files().setMode(QStringLiteral("locked"), 0);
        panel->setDir(panel.files().path(folder), 0);
        QTEST(panel->count(), "rows");
        QCOMPARE(panel->emptyText(), text);
        // What was said of one folder is not said of the next.
        panel->setDir(panel.files().path(QStringLiteral("full")), 0);
        QCOMPARE(panel->emptyText(), QString());
    }

    void saysNothingUnlessItIsAskedTo()
    {
        extras.status = false;
        const PanelFixture panel;
        panel.files().makeFolder(QStringLiteral("empty"));
        for (const char* name : {"empty", "missing"}) {
            panel->setDir(panel.files().path(QLatin1String(name)), 0);
            QCOMPARE(panel->emptyText(), QString());
        }
    }
};

QUARN_TEST_MAIN(tst_EmptyList)
#include "tst_emptylist.moc"
