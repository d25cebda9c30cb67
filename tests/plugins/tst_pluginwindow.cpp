#include "platform/keymap.h"
#include "plugins/support/pluginwindow.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

/// What the windows of all plugins do.
class tst_PluginWindow : public QObject
{
    Q_OBJECT

private slots:
    void titleKeepsItsDetail_data();
    void titleKeepsItsDetail();
    void softKeysAreTheWindows();
    void otherKeysArriveOnce();
    void starTogglesFullScreen();
};

namespace
{

class Window : public PluginWindow
{
public:
    Window() : PluginWindow(QStringLiteral("Test"))
    {
        show();
        [this] { QVERIFY(QTest::qWaitFor([this] { return keyReceiver() == this; })); }();
    }
    void end() override { ++ends; }

    QList<int> keys;
    int lefts = 0;
    int ends = 0;

protected:
    void keyPressed(int code) override
    {
        keys.append(code);
        PluginWindow::keyPressed(code);
    }
    void leftSoftKey() override { ++lefts; }
};

} // namespace

void tst_PluginWindow::titleKeepsItsDetail_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isWhole");
    QTest::newRow("short") << "a.txt" << true;
    QTest::newRow("empty") << "" << true;
    QTest::newRow("long") << QString(100, 'w') + ".txt" << false;
    QTest::newRow("with a line break") << "a\nb" << false;
}

void tst_PluginWindow::titleKeepsItsDetail()
{
    QFETCH(QString, name);
    QFETCH(bool, isWhole);
    Window window;
    window.showTitle(name, "12/34");
    const QString title = window.mainWidgetTitle();
    QVERIFY(title.endsWith(" · 12/34"));
    QCOMPARE(title == name + " · 12/34", isWhole);
    QVERIFY(!title.contains('\n'));
    QVERIFY(title.size() < 60);
    window.showTitle("a", QString());
    QCOMPARE(window.mainWidgetTitle(), QString("a"));
}

void tst_PluginWindow::softKeysAreTheWindows()
{
    Window window;
    pressKey(PhoneKey::SoftLeft);
    QCOMPARE(window.lefts, 1);
    QCOMPARE(window.ends, 0);
    pressKey(PhoneKey::SoftRight);
    QCOMPARE(window.lefts, 1);
    QCOMPARE(window.ends, 1);
    QVERIFY(window.keys.isEmpty());
}

void tst_PluginWindow::otherKeysArriveOnce()
{
    Window window;
    const QList<int> keys{PhoneKey::Up, PhoneKey::Left, PhoneKey::Return, '5', '#', PhoneKey::Hide};
    for (const int key : keys)
        pressKey(key);
    QCOMPARE(window.keys, keys);
}

void tst_PluginWindow::starTogglesFullScreen()
{
    Window window;
    QVERIFY(!window.isFullScreenMode());
    pressKey('*');
    QVERIFY(window.isFullScreenMode());
    pressKey('*');
    QVERIFY(!window.isFullScreenMode());
}

QUARN_TEST_MAIN(tst_PluginWindow)
#include "tst_pluginwindow.moc"
