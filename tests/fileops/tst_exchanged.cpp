// What a question was about is what is touched: another entry that has taken the name meanwhile is
// not.

#include "browser/filebrowserftab.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <cstdio>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

QString error(const QString& text)
{
    return Log::message(LANG_ERROR, text, "error");
}

/// A column "folder": whether the entry is one, or a file.
void addKinds()
{
    QTest::addColumn<bool>("folder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

} // namespace

class tst_Exchanged : public CommandTest
{
    Q_OBJECT

private slots:
    void deletedIsOnlyWhatWasAskedAbout_data() { addKinds(); }
    void deletedIsOnlyWhatWasAskedAbout()
    {
        make("left/a");
        fixture_->start();
        fixture_->highlight("a");
        fixture_->log().expect({[this] { exchange("left/a", yes); }});
        Fixture::choose(Fixture::Delete);
        QVERIFY(log().contains(error(LANG_UNABLE_DELETE)));
        QVERIFY(holdsTheOther("left/a"));
    }

    void copyReplacesOnlyWhatWasAskedAbout_data() { addKinds(); }
    void copyReplacesOnlyWhatWasAskedAbout()
    {
        make("right/a");
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "a", 2);
        fixture_->log().expect({[this] { exchange("right/a", yes); }});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), (QStringList{replaceQuestion("a"), error(LANG_DON_TRY_COPY)} +
                         fixture_->bothListed()));
        QVERIFY(holdsTheOther("right/a"));
    }

    void moveReplacesOnlyWhatWasAskedAbout_data() { addKinds(); }
    void moveReplacesOnlyWhatWasAskedAbout()
    {
        make("right/a");
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "a", 2);
        fixture_->log().expect({yes, [this] { exchange("right/a", yes); }});
        Fixture::choose(Fixture::Paste);
        QVERIFY(log().contains(error(LANG_DON_TRY_MOVE)));
        QVERIFY(holdsTheOther("right/a"));
        QVERIFY(fixture_->files().exists("left/a"));
    }

    void moveTakesOnlyWhatWasAskedAbout_data() { addKinds(); }
    void moveTakesOnlyWhatWasAskedAbout()
    {
        make("left/a");
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "a", 2);
        fixture_->log().expect({[this] { exchange("left/a", yes); }});
        Fixture::choose(Fixture::Paste);
        QVERIFY(log().contains(error(LANG_DON_TRY_MOVE)));
        QVERIFY(holdsTheOther("left/a"));
        QVERIFY(!fixture_->files().exists("right/a"));
    }

    void renamedIsOnlyWhatWasAskedAbout_data() { addKinds(); }
    void renamedIsOnlyWhatWasAskedAbout()
    {
        make("left/a");
        fixture_->start();
        fixture_->highlight("a");
        fixture_->log().expect({[this] { exchange("left/a", typing("b")); }});
        Fixture::choose(Fixture::Rename);
        QVERIFY(log().contains(error(LANG_RENAME_ERROR)));
        QVERIFY(holdsTheOther("left/a"));
        QVERIFY(!fixture_->files().exists("left/b"));
    }

    /// A panel whose first folder cannot be listed has none.
    void nothingInTheRootIsInTheWayOfAPanelWithoutAFolder_data()
    {
        QTest::addColumn<int>("item");
        QTest::newRow("copy") << int(Fixture::Copy);
        QTest::newRow("move") << int(Fixture::Move);
    }

    void nothingInTheRootIsInTheWayOfAPanelWithoutAFolder()
    {
        QFETCH(int, item);
        path_tab2 = "/a folder that no one has";
        fixture_->write(1, {"etc"});
        const FM* window = fixture_->start();
        QCOMPARE(window->panel(2)->curPath, QString());
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        fixture_->toClipboard(Fixture::CopyItem(item), "etc", 2);
        if (item == Fixture::Move)
            fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        const QStringList done = log();
        const QString text = item == Fixture::Copy ? LANG_DON_TRY_COPY : LANG_DON_TRY_MOVE;
        QVERIFY(!done.contains(replaceQuestion("etc")));
        QVERIFY(done.contains(Log::message(LANG_ERROR, text, "error")));
        QVERIFY2(done.filter(encodedPath(fixture_->left("etc"))).isEmpty(), "a tool was run");
    }

private:
    void make(const QString& name) const
    {
        QFETCH(bool, folder);
        const ScratchFolder& files = fixture_->files();
        for (const QString& each : {name, QStringLiteral("other")})
            files.write(folder ? each + "/in" : each, each.toUtf8());
    }

    /// The other one takes the name; then the user goes on.
    void exchange(const QString& name, const Log::Action& then) const
    {
        const auto path = [this](const QString& each) {
            return encodedPath(fixture_->files().path(each));
        };
        QCOMPARE(std::rename(path(name).constData(), path("first").constData()), 0);
        QCOMPARE(std::rename(path("other").constData(), path(name).constData()), 0);
        then();
    }

    bool holdsTheOther(const QString& name) const
    {
        const QByteArray content =
            fixture_->files().read(name) + fixture_->files().read(name + "/in");
        return content == "other" && fixture_->files().exists("first");
    }
};

QUARN_TEST_MAIN(tst_Exchanged)
#include "tst_exchanged.moc"
