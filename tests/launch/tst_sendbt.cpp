#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/zmodule.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/launch/shareservice.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QRegularExpression>

#include <memory>

namespace
{

using Log = CommandLog;

QString error(const QString& text)
{
    return Log::message(LANG_ERROR, text, QStringLiteral("error"));
}

} // namespace

class tst_SendBt : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<CommandFixture>();
        service_ = std::make_unique<ShareService>();
    }
    void cleanup()
    {
        service_.reset();
        ZModule::setExecutable({});
        fixture_.reset();
    }

    void fileIsOffered_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("type");
        QTest::newRow("lower case") << "song.mp3"
                                    << "media/MP3";
        QTest::newRow("mixed case") << "a.b.Jpg"
                                    << "media/JPG";
        QTest::newRow("dot at the end") << "a."
                                        << "media/";
        QTest::newRow("blanks and percent") << "%1 %2.txt"
                                            << "media/TXT";
        QTest::newRow("not Latin") << QString::fromUtf8("Я.mp3") << "media/MP3";
    }

    void fileIsOffered()
    {
        QFETCH(QString, name);
        QFETCH(QString, type);
        for (const int page : {1, 2}) {
            fixture_.reset();
            fixture_ = std::make_unique<CommandFixture>();
            fixture_->write(page, {name});
            fixture_->start(page);
            service_->requests.clear();
            fixture_->highlight(name);
            CommandFixture::choose(CommandFixture::SendByBluetooth);
            QCOMPARE(service_->requests.size(), 1);
            QCOMPARE(service_->requests.first().name, '/' + name);
            QCOMPARE(service_->requests.first().type, type);
            QCOMPARE(service_->requests.first().path, fixture_->folder(page) + '/' + name);
            QCOMPARE(fixture_->log().take(), QStringList());
        }
    }

    void fileWithoutADotIsOfUnknownType()
    {
        send("README");
        QCOMPARE(service_->requests.first().type, QString("media/unknown"));
        QCOMPARE(service_->requests.first().name, QString("/README"));
    }

    void whatIsNoRegularFileIsNotSent_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"folder", "fifo", "vanished"})
            QTest::newRow(kind) << kind;
    }

    void whatIsNoRegularFileIsNotSent()
    {
        QFETCH(QString, kind);
        if (kind == "folder")
            fixture_->files().makeFolder("left/x");
        else if (kind == "fifo")
            fixture_->files().makeFifo("left/x");
        else
            fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->highlight("x");
        if (kind == "vanished")
            QVERIFY(QFile::remove(fixture_->left("x")));
        CommandFixture::choose(CommandFixture::SendByBluetooth);
        QCOMPARE(fixture_->log().take(),
                 QStringList(error("Error can't send " + fixture_->left("x"))));
        QVERIFY(service_->requests.isEmpty());
        fixture_->dismissMessage();
    }

    void nothingIsSentFromTheAboutPage()
    {
        fixture_->start();
        fixture_->goTo(3);
        fixture_->log().take();
        fixture_->window()->slot_SendBt();
        QCOMPARE(fixture_->log().take(), QStringList(error("Error can't send ")));
        QVERIFY(service_->requests.isEmpty());
    }

    void refusalIsAnError()
    {
        service_->accepts = false;
        send("a.txt");
        QCOMPARE(service_->requests.size(), 1);
        QCOMPARE(fixture_->log().take(),
                 QStringList(error("Error send file " + fixture_->left("a.txt"))));
        fixture_->dismissMessage();
    }

    void afterAnUpgradeTheUserIsToldToStartAnew()
    {
        fixture_->files().write("quarn", "the newer one");
        ZModule::setFolder({});
        ZModule::setExecutable(QFile::encodeName(fixture_->files().path("quarn")) + " (deleted)");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module sharing: .* start it anew"));
        send("a.txt");
        QVERIFY(service_->requests.isEmpty());
        QCOMPARE(fixture_->log().take(), QStringList(error(LANG_UPGRADED)));
        fixture_->dismissMessage();
    }

    void marksAreIgnored()
    {
        fixture_->write(1, {"a", "b", "c"});
        fixture_->start();
        fixture_->mark({"a", "b"});
        fixture_->highlight("c");
        fixture_->log().take();
        CommandFixture::choose(CommandFixture::SendByBluetooth);
        QCOMPARE(service_->requests.size(), 1);
        QCOMPARE(service_->requests.first().path, fixture_->left("c"));
        QVERIFY(fixture_->panel(1)->isMultiSelect());
        QCOMPARE(fixture_->log().take(), QStringList());
    }

private:
    void send(const QString& name)
    {
        fixture_->write(1, {name});
        fixture_->start();
        fixture_->highlight(name);
        CommandFixture::choose(CommandFixture::SendByBluetooth);
    }

    std::unique_ptr<CommandFixture> fixture_;
    std::unique_ptr<ShareService> service_;
};

QUARN_TEST_MAIN(tst_SendBt)
#include "tst_sendbt.moc"
