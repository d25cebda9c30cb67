#include "files/entry.h"
#include "files/linktext.h"
#include "files/permissiontext.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

class tst_FileTexts : public QObject
{
    Q_OBJECT

private slots:
    void permissionsAreThreeGroupsOfThreeLetters_data()
    {
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0000U << "--- --- ---";
        QTest::newRow("all") << 0777U << "RWX RWX RWX";
        QTest::newRow("usual file") << 0644U << "RW- R-- R--";
        QTest::newRow("usual folder") << 0755U << "RWX R-X R-X";
        const char* const single[] = {"--- --- --X", "--- --- -W-", "--- --- R--",
                                      "--- --X ---", "--- -W- ---", "--- R-- ---",
                                      "--X --- ---", "-W- --- ---", "R-- --- ---"};
        for (unsigned bit = 0; bit < 9; ++bit)
            QTest::addRow("%03o", 1U << bit) << (1U << bit) << QString(single[bit]);
        QTest::newRow("special bits") << 07644U << "RW- R-- R--";
    }

    void permissionsAreThreeGroupsOfThreeLetters()
    {
        QFETCH(unsigned, mode);
        const ScratchFolder folder;
        folder.write("file");
        folder.setMode("file", mode);
        QTEST(permissionText(EntryInfo(folder.path("file")).mode()), "text");
    }

    void linkTextIsWhatStandsInTheLink_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("absolute") << "/etc/hosts";
        QTest::newRow("relative") << "../other/./file";
        QTest::newRow("leads nowhere") << "gone";
        QTest::newRow("blanks and breaks") << " a\nb ";
        QTest::newRow("letters") << QString::fromUtf8("\xC3\xA4/\xE2\x82\xAC");
        QTest::newRow("long") << QString(4000, QLatin1Char('n'));
    }

    void linkTextIsWhatStandsInTheLink()
    {
        QFETCH(QString, target);
        const ScratchFolder folder;
        folder.makeLink("link", target);
        QCOMPARE(linkText(folder.path("link")), target);
    }

    void whatIsNoLinkHasNoText()
    {
        const ScratchFolder folder;
        folder.write("file", "content");
        QVERIFY(linkText(folder.path("file")).isNull());
        QVERIFY(linkText(folder.path()).isNull());
        QVERIFY(linkText(folder.path("missing")).isNull());
    }
};

QUARN_TEST_MAIN(tst_FileTexts)
#include "tst_filetexts.moc"
