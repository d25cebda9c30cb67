#include "lang/languagereader.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "shell/upgradenotice.h"
#include "tests/support/keys.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QDir>

/// What the launcher has left to be told after an upgrade.
class tst_UpgradeNotice : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { qunsetenv("QUARN_NOTICE"); }

    void linesAreTakenApart()
    {
        UpgradeNotice expected;
        expected.version = "1.6-1";
        expected.folder = "/usr/share/quarn";
        expected.settings = QStringList{"Safe", "Trash"};
        expected.added = QStringList{"lang/turkish.lang"};
        expected.renewed = QStringList{"mime_types.cfg"};
        expected.kept = QStringList{"fm.cfg"};
        QCOMPARE(
            parsedNotice("version 1.6-1\nfolder /usr/share/quarn\nsetting Safe\nsetting Trash\n"
                         "new lang/turkish.lang\nrenewed mime_types.cfg\nkept fm.cfg\n"),
            expected);
    }

    void ofTwoUpgradesAllIsToldOnce()
    {
        const UpgradeNotice notice = parsedNotice("version 1.6\nfolder /a\nnew a\nnew b\n"
                                                  "version 1.7\nfolder /b\nnew b\nnew c\n");
        QCOMPARE(notice.version, "1.7");
        QCOMPARE(notice.folder, "/b");
        QCOMPARE(notice.added, (QStringList{"a", "b", "c"}));
    }

    void otherLinesDoNotCount()
    {
        QCOMPARE(parsedNotice("\n \nnew\nnew \nnewer a\n new b\n\xff\xfe c\n"), UpgradeNotice());
        QCOMPARE(parsedNotice({}), UpgradeNotice());
    }

    void ofManyNamesTheFirstAreShown()
    {
        UpgradeNotice notice;
        notice.version = "1.6";
        notice.added = QStringList{"a", "b", "c", "d", "e"};
        QCOMPARE(noticeText(notice, english()), "Quarn 1.6<hr>Added:\na, b, c\nAnd 2 more");
        notice.added = QStringList{"a", "b", "c"};
        QCOMPARE(noticeText(notice, english()), "Quarn 1.6<hr>Added:\na, b, c");
    }

    void everyLanguageTellsAll_data()
    {
        QTest::addColumn<QString>("file");
        const QDir folder(QStringLiteral(QUARN_DATA_DIR "/lang"));
        for (const QString& file : folder.entryList({"*.lang"}))
            QTest::newRow(qPrintable(file)) << folder.filePath(file);
    }
    void everyLanguageTellsAll()
    {
        QFETCH(QString, file);
        UpgradeNotice notice;
        notice.version = "1.6";
        notice.folder = "/usr/share/quarn";
        notice.settings = QStringList{"Safe"};
        notice.added = QStringList{"a"};
        notice.renewed = QStringList{"b"};
        notice.kept = QStringList{"c"};
        const LanguageReader texts(file);
        const QString kept = texts.text("KEPT_FILES", {}).replace("%1", "/usr/share/quarn");
        QVERIFY(kept.contains("/usr/share/quarn"));
        QCOMPARE(noticeText(notice, file), "Quarn 1.6<hr>" + texts.text("NEW_SETTINGS", {}) +
                                               "\nSafe<hr>" + texts.text("NEW_FILES", {}) +
                                               "\na<hr>" + texts.text("RENEWED_FILES", {}) +
                                               "\nb<hr>" + kept + "\nc");
    }

    void itIsShownAfterTheStartAndGone()
    {
        Program program;
        startWith(program, "version 1.6\nnew lang/turkish.lang\n");
        QVERIFY(!qEnvironmentVariableIsSet("QUARN_NOTICE"));
        QTRY_VERIFY(textView->isVisible());
        QVERIFY(!processView->isUp());
        QCOMPARE(textView->shownTitle(), "What is new");
        QCOMPARE(textView->shownText(), "Quarn 1.6<hr>Added:\nlang/turkish.lang");
        QVERIFY(!QFile::exists(program.workFolder().path("notice")));
        pressKey('5');
        QVERIFY(!textView->isUp());
        QCOMPARE(ZScreen::instance()->active(), program.window());
    }

    void fileThatSaysNothingShowsNoBox()
    {
        Program program;
        startWith(program, "version 1.6\nfolder /usr/share/quarn\n");
        QTRY_VERIFY(!QFile::exists(program.workFolder().path("notice")));
        QVERIFY(!textView->isUp());
    }

    void folderInItsPlaceStays()
    {
        Program program;
        program.workFolder().makeFolder("notice");
        const QString folder = program.workFolder().path("notice");
        program.start();
        showNotice(folder);
        QVERIFY(QFile::exists(folder));
        QVERIFY(!textView->isUp());
    }

private:
    static QString english() { return QStringLiteral(QUARN_DATA_DIR "/lang/english.lang"); }

    static void startWith(Program& program, const QByteArray& content)
    {
        program.workFolder().write("notice", content);
        qputenv("QUARN_NOTICE", program.workFolder().path("notice").toUtf8());
        program.start();
    }
};

QUARN_TEST_MAIN(tst_UpgradeNotice)
#include "tst_upgradenotice.moc"
