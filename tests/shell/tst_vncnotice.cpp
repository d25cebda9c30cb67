#include "lang/texts.h"
#include "platform/qcopchannel.h"
#include "platform/vncdisplay.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "tests/support/keys.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QSignalSpy>

/// What the main window says of plugins that are shown over VNC.
class tst_VncNotice : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { VncDisplay::setUsed(true); }
    void cleanupTestCase() { VncDisplay::setUsed(false); }

    void portOfAPluginIsTold()
    {
        Program program;
        program.start();
        QVERIFY(QCopChannel::send("QuarnDisplay", "shown 5901"));
        QTRY_VERIFY(textView->isVisible());
        QCOMPARE(textView->shownText(), withNumber(LANG_VNC_PORT, 5901));
        pressKey('5');
        QVERIFY(!textView->isUp());
    }

    void whatIsUpComesFirst()
    {
        Program program;
        program.start();
        pressKey(PhoneKey::SoftLeft);
        const QWidget* menu = ZScreen::instance()->active();
        QSignalSpy told(ZScreen::instance(), &ZScreen::guestShown);
        QVERIFY(QCopChannel::send("QuarnDisplay", "shown 5901"));
        QTRY_COMPARE(told.size(), 1);
        QCOMPARE(ZScreen::instance()->active(), menu);
        pressKey(PhoneKey::SoftRight);
        QTRY_VERIFY(textView->isVisible());
        pressKey('5');
    }
};

QUARN_TEST_MAIN(tst_VncNotice)
#include "tst_vncnotice.moc"
