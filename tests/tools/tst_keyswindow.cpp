#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "plugins/support/plugintexts.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tools/quarn_keys/askedkeys.h"
#include "tools/quarn_keys/keyswindow.h"
#include "tools/quarn_keys/questionpage.h"

#include <QKeyEvent>
#include <QMouseEvent>

/// The window that asks for keys.
class tst_KeysWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void everyKeyIsAskedForOnce();
    void keyIsTakenWhenItIsLetGo();
    void shiftedKeyIsOneKey();
    void softKeysHaveNoMeaningYet();
    void heldKeySkips();
    void repeatedKeyIsHeld_data();
    void repeatedKeyIsHeld();
    void quickPressesAreTwo();
    void keyHeldLongerFinishes();
    void fingerSkipsWhenItIsHeld();
    void keyGivenBeforeIsWarnedOf();
    void keyThatNothingNamesIsWarnedOf();
    void answersAreListedWithTheirKeysInEffect();
    void savedWithTheKeysThatWereGiven();
    void failureIsToldAndCanBeTriedAgain();
    void nothingGivenIsNotSaved();

private:
    void send(QEvent::Type type, int key, quint64 time, bool isRepeat = false, quint32 scan = 0);
    void press(int key, quint32 scan = 0);
    void finish();
    QString drawn();

    std::unique_ptr<ScratchFolder> folder_;
    std::unique_ptr<KeysWindow> window_;
    quint64 now_ = 0;
};

void tst_KeysWindow::init()
{
    now_ = 1000000;
    folder_ = std::make_unique<ScratchFolder>();
    window_ = std::make_unique<KeysWindow>(folder_->path("keymap.cfg"));
    window_->show();
    QTRY_COMPARE(keyReceiver(), window_->page());
}

void tst_KeysWindow::cleanup()
{
    window_.reset();
    KeyMap::instance() = KeyMap();
}

void tst_KeysWindow::send(QEvent::Type type, int key, quint64 time, bool isRepeat, quint32 scan)
{
    QKeyEvent event(type, key, Qt::NoModifier, scan, 0, 0, QString(), isRepeat);
    event.setTimestamp(time);
    QCoreApplication::sendEvent(keyReceiver(), &event);
}

/// A press of a key, until it has been taken.
void tst_KeysWindow::press(int key, quint32 scan)
{
    const int open = window_->questions().place();
    const QString before = window_->page()->question().message;
    send(QEvent::KeyPress, key, now_, false, scan);
    send(QEvent::KeyRelease, key, now_ + 80, false, scan);
    now_ += 1000;
    QTRY_VERIFY(window_->questions().place() != open ||
                window_->page()->question().message != before);
}

void tst_KeysWindow::finish()
{
    send(QEvent::KeyPress, Qt::Key_F8, now_);
    QTRY_VERIFY(window_->questions().isOver());
    send(QEvent::KeyRelease, Qt::Key_F8, now_ + 3000);
}

QString tst_KeysWindow::drawn()
{
    QString all;
    for (const DrawnText& text : textsDrawnBy(*window_))
        all += text.text + '|';
    return all;
}

void tst_KeysWindow::everyKeyIsAskedForOnce()
{
    QStringList names;
    for (const int code : askedKeys()) {
        QCOMPARE(window_->page()->question().code, code);
        const QString name = window_->page()->question().name;
        QVERIFY(!name.isEmpty() && !names.contains(name));
        names.append(name);
        QVERIFY2(drawn().contains(name), qPrintable(name));
        press(Qt::Key_A + int(names.size()));
    }
    QCOMPARE(names.size(), 27);
    QVERIFY(window_->questions().isOver());
    QVERIFY(names.startsWith("Left soft key"));
}

void tst_KeysWindow::keyIsTakenWhenItIsLetGo()
{
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    QCOMPARE(window_->questions().place(), 1);
    send(QEvent::KeyRelease, Qt::Key_F5, now_ + 100);
    QTRY_COMPARE(window_->questions().place(), 2);
    QCOMPARE(window_->questions().answers().first().key.key, int(Qt::Key_F5));
    QVERIFY2(drawn().contains("Left soft key: F5"), qPrintable(drawn()));
    QVERIFY(window_->mainWidgetTitle().endsWith("2/27"));
}

void tst_KeysWindow::shiftedKeyIsOneKey()
{
    send(QEvent::KeyPress, Qt::Key_Shift, now_);
    send(QEvent::KeyPress, Qt::Key_Asterisk, now_ + 50);
    send(QEvent::KeyRelease, Qt::Key_Asterisk, now_ + 100);
    send(QEvent::KeyRelease, Qt::Key_Shift, now_ + 120);
    QTRY_COMPARE(window_->questions().place(), 2);
    QCOMPARE(window_->questions().answers().size(), 1);
    QCOMPARE(window_->questions().answers().first().key.key, int(Qt::Key_Asterisk));
}

void tst_KeysWindow::softKeysHaveNoMeaningYet()
{
    press(Qt::Key_F11);
    press(Qt::Key_F9);
    QVERIFY(!ZApplication::isQuitting());
    QCOMPARE(window_->questions().answerFor(PhoneKey::SoftLeft)->key, int(Qt::Key_F11));
    QCOMPARE(window_->questions().answerFor(PhoneKey::SoftRight)->key, int(Qt::Key_F9));
    QVERIFY(!drawn().contains("Exit"));
}

void tst_KeysWindow::heldKeySkips()
{
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    send(QEvent::KeyRelease, Qt::Key_F5, now_ + KeysWindow::SkipTime);
    QTRY_COMPARE(window_->questions().place(), 2);
    QVERIFY(window_->questions().answers().isEmpty());
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    send(QEvent::KeyRelease, Qt::Key_F5, now_ + KeysWindow::SkipTime - 1);
    QTRY_COMPARE(window_->questions().place(), 3);
    QCOMPARE(window_->questions().answers().size(), 1);
}

void tst_KeysWindow::repeatedKeyIsHeld_data()
{
    QTest::addColumn<bool>("isTold");
    QTest::newRow("told by the toolkit") << true;
    QTest::newRow("not told") << false;
}

void tst_KeysWindow::repeatedKeyIsHeld()
{
    QFETCH(bool, isTold);
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    for (quint64 time = 600; time < 1200; time += 40) {
        send(QEvent::KeyRelease, Qt::Key_F5, now_ + time, isTold);
        send(QEvent::KeyPress, Qt::Key_F5, now_ + time, isTold);
    }
    send(QEvent::KeyRelease, Qt::Key_F5, now_ + 1200);
    QTRY_COMPARE(window_->questions().place(), 2);
    QVERIFY(window_->questions().answers().isEmpty());
}

void tst_KeysWindow::quickPressesAreTwo()
{
    for (const int key : {Qt::Key_F5, Qt::Key_F6}) {
        send(QEvent::KeyPress, key, now_);
        send(QEvent::KeyRelease, key, now_);
    }
    QTRY_COMPARE(window_->questions().answers().size(), 2);
}

void tst_KeysWindow::keyHeldLongerFinishes()
{
    press(Qt::Key_F5);
    QVERIFY(drawn().contains("Hold any key"));
    send(QEvent::KeyPress, Qt::Key_F8, now_);
    QTRY_VERIFY(drawn().contains("Let go"));
    QTRY_VERIFY(window_->questions().isOver());
    QCOMPARE(window_->list()->count(), 1);
}

void tst_KeysWindow::fingerSkipsWhenItIsHeld()
{
    const auto touch = [this](QEvent::Type type, quint64 time) {
        auto* page = const_cast<QuestionPage*>(window_->page());
        const QPointF point(20, 20);
        QMouseEvent event(type, point, page->mapToGlobal(point), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        event.setTimestamp(time);
        QCoreApplication::sendEvent(page, &event);
    };
    touch(QEvent::MouseButtonPress, now_);
    touch(QEvent::MouseButtonRelease, now_ + 1100);
    QTRY_COMPARE(window_->questions().place(), 2);
    touch(QEvent::MouseButtonPress, now_ + 2000);
    touch(QEvent::MouseButtonRelease, now_ + 2100);
    now_ += 5000;
    press(Qt::Key_F5);
    QCOMPARE(window_->questions().place(), 3);
    QCOMPARE(window_->questions().answers().size(), 1);
}

void tst_KeysWindow::keyGivenBeforeIsWarnedOf()
{
    press(Qt::Key_F5);
    press(Qt::Key_F5);
    QVERIFY(window_->page()->question().isWarning);
    const QString message = window_->page()->question().message;
    QVERIFY2(message.contains("F5") && message.contains("Left soft key"), qPrintable(message));
    QCOMPARE(window_->page()->question().name, QString("Right soft key"));
    press(Qt::Key_F6);
    QVERIFY(!window_->page()->question().isWarning);
}

void tst_KeysWindow::keyThatNothingNamesIsWarnedOf()
{
    press(Qt::Key_unknown);
    QVERIFY(window_->page()->question().isWarning);
    QVERIFY(window_->page()->question().given.isEmpty());
    press(Qt::Key_unknown, 151);
    QVERIFY2(window_->page()->question().message.endsWith(": 151"),
             qPrintable(window_->page()->question().message));
    QCOMPARE(window_->page()->question().given, QList<int>{PhoneKey::SoftLeft});
}

void tst_KeysWindow::answersAreListedWithTheirKeysInEffect()
{
    folder_->write("keymap.cfg", "F1 = 0x1049\nF5 = 0x1030\n");
    press(Qt::Key_F5);
    press(Qt::Key_F6);
    finish();
    QCOMPARE(window_->list()->count(), 2);
    QCOMPARE(window_->list()->item(0)->getSubItemText(1, 0), QString("Left soft key: F5"));
    QCOMPARE(window_->list()->item(1)->getSubItemText(1, 0), QString("Right soft key: F6"));
    QVERIFY(drawn().contains("Save") && drawn().contains("Exit"));
    const auto codeOf = [](int key) {
        return PhoneKey::code(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier));
    };
    QCOMPARE(codeOf(Qt::Key_F5), int(PhoneKey::SoftLeft));
    QCOMPARE(codeOf(Qt::Key_F6), int(PhoneKey::SoftRight));
    QCOMPARE(codeOf(Qt::Key_F1), int(PhoneKey::Music));
    QCOMPARE(folder_->read("keymap.cfg"), QByteArray("F1 = 0x1049\nF5 = 0x1030\n"));
}

void tst_KeysWindow::savedWithTheKeysThatWereGiven()
{
    press(Qt::Key_F5);
    press(Qt::Key_F6);
    finish();
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    QCOMPARE(window_->result(), pluginTexts().keysSaved);
    QVERIFY(folder_->read("keymap.cfg").contains("\nF5 = 0x1038\nF6 = 0x103a\n"));
    QVERIFY(!drawn().contains("Save|") && drawn().contains("Exit"));
    QVERIFY(!ZApplication::isQuitting());
    send(QEvent::KeyPress, Qt::Key_F6, now_);
    QVERIFY(ZApplication::isQuitting());
}

void tst_KeysWindow::failureIsToldAndCanBeTriedAgain()
{
    folder_->setMode(".", 0500);
    press(Qt::Key_F5);
    finish();
    pressKey(PhoneKey::SoftLeft);
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    QCOMPARE(window_->result(), "keymap.cfg cannot be written: " + qt_error_string(EACCES));
    QVERIFY(drawn().contains("Again"));
    folder_->setMode(".", 0700);
    send(QEvent::KeyPress, Qt::Key_F5, now_);
    QCOMPARE(window_->result(), pluginTexts().keysSaved);
    QVERIFY(folder_->exists("keymap.cfg"));
}

void tst_KeysWindow::nothingGivenIsNotSaved()
{
    finish();
    QVERIFY2(drawn().contains(pluginTexts().noKeysGiven), qPrintable(drawn()));
    QVERIFY(!drawn().contains("Save"));
    pressKey(PhoneKey::SoftLeft);
    QVERIFY(!folder_->exists("keymap.cfg"));
    QVERIFY(window_->result().isEmpty());
}

QUARN_TEST_MAIN(tst_KeysWindow)
#include "tst_keyswindow.moc"
