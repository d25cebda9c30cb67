#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "sharing/share_tool.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

// The linker leads each call of the service here.
bool wrapShareByBt(const SHARE_Tool::OBJECT_INFO& info, const QString& path, bool flag) __asm__(
    "__wrap__ZN10SHARE_Tool9shareByBtERKNS_11OBJECT_INFOERK7QStringb");

namespace
{

using Log = CommandLog;

struct Request {
    QString name;
    QString type;
    QString path;
    bool flag;
};

QList<Request> requests;
bool accepts = true;

QString error(const QString& text)
{
    return Log::message(LANG_ERROR, text, QStringLiteral("error"));
}

} // namespace

bool wrapShareByBt(const SHARE_Tool::OBJECT_INFO& info, const QString& path, bool flag)
{
    requests.append({info.objectName, info.objectType, path, flag});
    return accepts;
}

class tst_SendBt : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<CommandFixture>();
        requests.clear();
        accepts = true;
    }
    void cleanup() { fixture_.reset(); }

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
            requests.clear();
            fixture_->highlight(name);
            CommandFixture::choose(CommandFixture::SendByBluetooth);
            QCOMPARE(requests.size(), 1);
            QCOMPARE(requests.first().name, '/' + name);
            QCOMPARE(requests.first().type, type);
            QCOMPARE(requests.first().path, fixture_->folder(page) + '/' + name);
            QVERIFY(!requests.first().flag);
            QCOMPARE(fixture_->log().take(), QStringList());
        }
    }

    void fileWithoutADotIsOfUnknownType()
    {
        send("README");
        QCOMPARE(requests.first().type, QString("media/unknown"));
        QCOMPARE(requests.first().name, QString("/README"));
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
        QVERIFY(requests.isEmpty());
        fixture_->dismissMessage();
    }

    void nothingIsSentFromTheAboutPage()
    {
        fixture_->start();
        fixture_->goTo(3);
        fixture_->log().take();
        fixture_->window()->slot_SendBt();
        QCOMPARE(fixture_->log().take(), QStringList(error("Error can't send ")));
        QVERIFY(requests.isEmpty());
    }

    void refusalIsAnError()
    {
        accepts = false;
        send("a.txt");
        QCOMPARE(requests.size(), 1);
        QCOMPARE(fixture_->log().take(),
                 QStringList(error("Error send file " + fixture_->left("a.txt"))));
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
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().path, fixture_->left("c"));
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
};

QUARN_TEST_MAIN(tst_SendBt)
#include "tst_sendbt.moc"
