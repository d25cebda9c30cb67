#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QProcess>
#include <QSignalSpy>

#include <memory>

namespace
{

using Log = CommandLog;
using PhoneKey::Code;

const QString List = QStringLiteral("plugins/LyraPlayer/TempList.m3u");
const QString Player = QStringLiteral("plugins/LyraPlayer/LyraPlayer");
const QString Noted = QStringLiteral("plugins/LyraPlayer/noted");

QByteArray playerFolder()
{
    return (work_folder + "/plugins/LyraPlayer/").toUtf8();
}

QString shellLine(const QByteArray& command)
{
    return Log::shell(command);
}

QByteArray quoted(const QString& path)
{
    return '"' + path.toUtf8() + '"';
}

QString playFile(const QString& path)
{
    return shellLine(playerFolder() + "LyraPlayer -d " + quoted(path) + '&');
}

QString playList()
{
    return shellLine(playerFolder() + "LyraPlayer -d " + playerFolder() + "TempList.m3u &");
}

QString listFolder(const QString& path)
{
    return shellLine("find " + quoted(path) + " -type f -name *.mp3 -print | sort > " +
                     playerFolder() + "TempList.m3u");
}

QString addFolder(const QString& path)
{
    return shellLine("find " + quoted(path) + " -type f -name *.mp3 -print | sort >> " +
                     playerFolder() + "TempList.m3u");
}

QString addFile(const QString& path)
{
    return shellLine("echo " + quoted(path) + " >> " + playerFolder() + "TempList.m3u");
}

bool showsGenerating(kWidget& box)
{
    kWidget expected;
    expected.showProcess("Processing..", "Generate playlist...", 4, LANG_PLEASE_WAIT, 4,
                         "res/img/open_with.png", kWidget::Plain);
    return looksLike(box, expected);
}

/// What the environment says of the user's locale, taken back in the end.
class UsersLocale
{
public:
    /// A null name leaves the variable unset.
    UsersLocale(const char* variable, const QByteArray& name, const QString& folder)
    {
        for (const char* each : Names) {
            before_.append(qgetenv(each));
            qunsetenv(each);
        }
        if (!name.isNull())
            qputenv(variable, name);
        qputenv("LOCPATH", folder.toUtf8());
    }
    ~UsersLocale()
    {
        for (qsizetype i = 0; i < before_.size(); ++i) {
            if (before_.at(i).isNull())
                qunsetenv(Names[i]);
            else
                qputenv(Names[i], before_.at(i));
        }
    }
    UsersLocale(const UsersLocale&) = delete;
    UsersLocale& operator=(const UsersLocale&) = delete;

private:
    static constexpr const char* Names[] = {"LC_ALL", "LC_COLLATE", "LANG", "LOCPATH"};
    QByteArrayList before_;
};

/// What sort makes of four lines.
QByteArray sortedLines(const ScratchFolder& folder)
{
    systemShell("printf 'B\\nb\\na\\nA\\n' | sort > " + quoted(folder.path("sorted")));
    return folder.read("sorted");
}

} // namespace

class tst_Music : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QProcess::execute("localedef", {"--no-archive", "-i", "en_US", "-f", "UTF-8",
                                                 locales_.path("xx_XX.UTF-8")}),
                 0);
    }

    void init()
    {
        fixture_ = std::make_unique<CommandFixture>();
        work().write(Player, "#!/bin/sh\n"
                             "cd \"${0%/*}\"\n"
                             "printf '%s\\n' \"$0\" \"$@\" > noting\n"
                             "mv noting noted\n");
        work().setMode(Player, 0755);
    }
    void cleanup() { fixture_.reset(); }

    void fileIsPlayedAloneWithoutAListOrABox_data() { addPages(); }
    void fileIsPlayedAloneWithoutAListOrABox()
    {
        QFETCH(int, page);
        start({"a.mp3", "b.txt"}, page);
        for (const char* name : {"a.mp3", "b.txt"}) {
            fixture_->highlight(name);
            play();
            QCOMPARE(taken(), QStringList(playFile(fixture_->folder(page) + '/' + name)));
        }
        QVERIFY(!processView->isUp());
        QVERIFY(!work().exists(List));
    }

    void whatIsNotThereIsPlayedAsAFile()
    {
        start({});
        fixture_->goTo(3);
        play();
        QCOMPARE(taken(), QStringList(playFile(QString())));
    }

    void folderReplacesTheListAndIsPlayed()
    {
        start({"album/2.mp3", "album/1.mp3", "album/b/0.mp3", "album/c.txt", "album/SONG.MP3"});
        work().write(List, "an earlier list\n");
        fixture_->highlight("album");
        fixture_->log().setShell(systemShell);
        play();
        const QString album = fixture_->left("album");
        QCOMPARE(taken(), (QStringList{Log::busy(), listFolder(album), playList()}));
        QCOMPARE(list(), (QStringList{album + "/1.mp3", album + "/2.mp3", album + "/b/0.mp3", ""}));
        QTRY_VERIFY(work().exists(Noted));
        QCOMPARE(work().read(Noted),
                 playerFolder() + "LyraPlayer\n-d\n" + playerFolder() + "TempList.m3u\n");
    }

    void busyBoxIsOnTheScreenWhileTheListIsMade_data()
    {
        QTest::addColumn<bool>("marked");
        QTest::newRow("of a folder") << false;
        QTest::newRow("of marked entries") << true;
    }

    void busyBoxIsOnTheScreenWhileTheListIsMade()
    {
        QFETCH(bool, marked);
        start({"album/1.mp3"});
        fixture_->highlight("album");
        if (marked)
            fixture_->mark({"album"});
        int shown = 0;
        fixture_->log().setShell([&shown](const QByteArray& command) {
            if (command.startsWith("find"))
                shown += processView->isVisible() && showsGenerating(*processView);
            return 0;
        });
        play();
        QCOMPARE(shown, 1);
        QVERIFY(processView->isUp());
        const TicksHeldBack held(*processView);
        int ticks = 0;
        for (; processView->isUp() && ticks < 100; ++ticks)
            processView->aniUpdate();
        QVERIFY2(ticks > 5 && ticks <= 15, qPrintable(QString::number(ticks)));
    }

    void folderWithoutLowerCaseNamesGivesAnEmptyListThatIsPlayed()
    {
        start({"album/SONG.MP3", "album/song.mp3x"});
        fixture_->highlight("album");
        fixture_->log().setShell(systemShell);
        play();
        QCOMPARE(list(), QStringList(QString()));
        QTRY_VERIFY(work().exists(Noted));
    }

    void markedEntriesAreListedInTheirOrderWithAnEmptyLineAtTheEnd()
    {
        start({"album/2.mp3", "album/1.mp3", "b.mp3", "z.txt"});
        work().write(List, "an earlier list\n");
        fixture_->mark({"z.txt", "album", "b.mp3"});
        fixture_->log().setShell(systemShell);
        fixture_->log().take();
        play();
        QStringList lines = taken();
        // Taking the marks lists the panel anew; then come the commands.
        QCOMPARE(lines.takeFirst(), Log::listed(fixture_->left()));
        const QString album = fixture_->left("album");
        QCOMPARE(lines,
                 (QStringList{Log::busy(), addFolder(album), addFile(fixture_->left("b.mp3")),
                              addFile(fixture_->left("z.txt")), addFile(QString()), playList()}));
        QCOMPARE(list(), (QStringList{album + "/1.mp3", album + "/2.mp3", fixture_->left("b.mp3"),
                                      fixture_->left("z.txt"), "", ""}));
        QVERIFY(!fixture_->panel(1)->isMultiSelect());
    }

    void withoutAMarkTheCurrentEntryIsPlayed()
    {
        start({"a.mp3"});
        fixture_->mark({});
        fixture_->highlight("a.mp3");
        play();
        QCOMPARE(taken().last(), playFile(fixture_->left("a.mp3")));
        QVERIFY2(!fixture_->panel(1)->isMultiSelect(), "asking for the marks ends the mode");
    }

    void listIsInByteOrderInEveryLocale_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QByteArray>("order");
        const QByteArray letters = "a\nA\nb\nB\n";
        const QByteArray bytes = "A\nB\na\nb\n";
        for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
            QTest::addRow("letters by %s", variable)
                << QByteArray(variable) << QByteArray("xx_XX.UTF-8") << letters;
            QTest::addRow("not installed by %s", variable)
                << QByteArray(variable) << QByteArray("yy_YY.UTF-8") << bytes;
        }
    }

    void listIsInByteOrderInEveryLocale()
    {
        QFETCH(QByteArray, variable);
        QFETCH(QByteArray, locale);
        start({"album/B.mp3", "album/b.mp3", "album/a.mp3", "album/A.mp3"});
        fixture_->log().setShell(systemShell);
        const UsersLocale users(variable.constData(), locale, locales_.path());
        QTEST(sortedLines(locales_), "order");
        const QString album = fixture_->left("album");
        const QStringList sorted{album + "/A.mp3", album + "/B.mp3", album + "/a.mp3",
                                 album + "/b.mp3"};
        fixture_->highlight("album");
        play();
        QCOMPARE(list(), sorted + QStringList(QString()));
        processView->init();
        fixture_->mark({"album"});
        play();
        QCOMPARE(list(), sorted + QStringList({QString(), QString()}));
        QCOMPARE(qgetenv(variable.constData()), locale);
        QTEST(sortedLines(locales_), "order");
    }

    void playerGetsTheUsersLocale_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("one") << QByteArray("C.UTF-8");
        QTest::newRow("not installed") << QByteArray("yy_YY.UTF-8");
    }

    void playerGetsTheUsersLocale()
    {
        QFETCH(QByteArray, locale);
        work().write(Player, "#!/bin/sh\n"
                             "cd \"${0%/*}\"\n"
                             "echo \"${LC_ALL-none}\" > noting\n"
                             "mv noting noted\n");
        start({"album/1.mp3"});
        fixture_->log().setShell(systemShell);
        const UsersLocale users("LC_ALL", locale, QString());
        fixture_->highlight("album");
        play();
        QTRY_VERIFY(work().exists(Noted));
        QCOMPARE(work().read(Noted), (locale.isNull() ? "none" : locale) + '\n');
    }

    void runningPlayerIsOnlyShown_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("marked");
        QTest::newRow("file") << "a.mp3" << false;
        QTest::newRow("folder") << "album" << false;
        QTest::newRow("marked") << "album" << true;
    }

    void runningPlayerIsOnlyShown()
    {
        QFETCH(QString, name);
        QFETCH(bool, marked);
        start({"a.mp3", "album/1.mp3"});
        fixture_->highlight(name);
        if (marked)
            fixture_->mark({name});
        const QCopChannel channel("LyraPlayer");
        QSignalSpy received(&channel, &QCopChannel::received);
        play();
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received.first().at(0).toByteArray(), QByteArray("show"));
        QVERIFY(received.first().at(1).toByteArray().isEmpty());
        QCOMPARE(taken(), QStringList());
        QVERIFY(!processView->isUp());
        QCOMPARE(fixture_->panel(1)->isMultiSelect(), marked);
        QVERIFY(!work().exists(List));
    }

    void oddNamesAreListedAsTheyAre_data() { addOddNames(); }
    void oddNamesAreListedAsTheyAre()
    {
        QFETCH(QString, name);
        start({name});
        fixture_->mark({name});
        play();
        QVERIFY(taken().contains(addFile(fixture_->left(name))));
        fixture_->highlight(name);
        play();
        QCOMPARE(taken().last(), playFile(fixture_->left(name)));
    }

    void listThatCannotBeWrittenStillStartsThePlayer()
    {
        start({"album/1.mp3"});
        work().makeFolder(List);
        fixture_->highlight("album");
        fixture_->log().setShell(systemShell);
        play();
        QCOMPARE(taken().last(), playList());
        QTRY_VERIFY(work().exists(Noted));
        QVERIFY(!textView->isUp());
    }

private:
    const ScratchFolder& work() const { return fixture_->program().workFolder(); }

    /// The program with files in both panels and a page shown; no command is really run.
    void start(const QStringList& names, int page = 1)
    {
        for (const int each : {1, 2})
            fixture_->write(each, names);
        fixture_->start(page);
        fixture_->log().setShell([](const QByteArray&) { return 0; });
    }

    void play()
    {
        processView->init();
        fixture_->log().take();
        pressKey(Code::Music);
    }

    QStringList list() const
    {
        return QString::fromUtf8(work().read(List)).split(QLatin1Char('\n'));
    }

    QStringList taken() { return fixture_->log().take(); }

    const ScratchFolder locales_; ///< in which the system looks for them
    std::unique_ptr<CommandFixture> fixture_;
};

QUARN_TEST_MAIN(tst_Music)
#include "tst_music.moc"
