#include "platform/keymap.h"
#include "platform/zglide.h"
#include "platform/zmotion.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QVariantAnimation>

namespace
{

/// Milliseconds; for what takes a few seconds.
constexpr int MenuPatience = 60000;
constexpr int LongItem = 1;

const ZSkinService::Look& menuLook()
{
    return ZSkinService::look(ZSkinService::clsOptionsMenu);
}

QRect rowOf(int position)
{
    return {0, 1 + position * ZSkinService::MenuRowHeight, 236, ZSkinService::MenuRowHeight};
}

} // namespace

/// How the text of the highlighted item glides that is wider than its menu.
class tst_ZOptionsMenuGlide : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        main_ = showMainWidget();
        takeForActive(main_->window());
        ZMotion::setEnabled(true);
        menu_ = makeMenu(2);
        menu_->changeItem(LongItem, '\t' + QString(60, 'H'), {});
    }

    void cleanup()
    {
        menu_.reset();
        main_.reset();
        ZMotion::setEnabled(false);
    }

    void longTextGlides()
    {
        open();
        const QImage resting = picture();
        QVERIFY(glide()->isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(glide()->offset() > 1, MenuPatience);
        const QImage gliding = picture();
        QVERIFY(gliding != resting);
        QCOMPARE(gliding.copy(rowOf(0)), resting.copy(rowOf(0)));
        // It stays on its line and between the icon and the digit.
        const QRect ink = inkOf(gliding);
        QVERIFY(inkOf(resting).left() <= ink.left());
        QCOMPARE(ink.top(), inkOf(resting).top());
        QCOMPARE(ink.bottom(), inkOf(resting).bottom());
        const QRect digit = rowOf(LongItem).adjusted(216, 0, 0, 0);
        QCOMPARE(gliding.copy(digit), resting.copy(digit));
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Up);
        QVERIFY(picture() == resting);
    }

    void textThatFitsRests()
    {
        open();
        QVERIFY(glide()->isRunning());
        pressKey(PhoneKey::Up);
        QVERIFY(!glide()->isRunning());
        pressKey(PhoneKey::Down);
        QVERIFY(glide()->isRunning());
        menu_->changeItem(menu_->idAt(LongItem), "short", {});
        QVERIFY(!glide()->isRunning());
    }

    void textsRestWithoutMotion()
    {
        ZMotion::setEnabled(false);
        open();
        QVERIFY(glide() == nullptr || !glide()->isRunning());
    }

    void textRestsWhileAnotherBoxHasTheKeys()
    {
        const auto other = makeMenu(1);
        open();
        other->show();
        QVERIFY(!glide()->isRunning());
        other->hide();
        QVERIFY(glide()->isRunning());
        menu_->hide();
        QVERIFY(!glide()->isRunning());
    }

private:
    /// Shows the menu, where it stays, with the long item highlighted.
    void open()
    {
        menu_->show();
        auto* rise = menu_->findChild<QVariantAnimation*>();
        QTRY_VERIFY(rise == nullptr || rise->state() == QAbstractAnimation::Stopped);
        pressKey(PhoneKey::Down);
    }

    ZGlide* glide() const { return menu_->findChild<ZGlide*>(); }
    QImage picture() const { return menu_->grab().toImage(); }

    static QRect inkOf(const QImage& picture)
    {
        return inkBounds(picture, rowOf(LongItem).adjusted(8, 0, -20, 0), menuLook().highlight);
    }

    std::unique_ptr<QWidget> main_;
    std::unique_ptr<ZOptionsMenu> menu_;
};

QUARN_TEST_MAIN(tst_ZOptionsMenuGlide)
#include "tst_zoptionsmenuglide.moc"
