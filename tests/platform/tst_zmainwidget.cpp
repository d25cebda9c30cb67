#include "platform/keymap.h"
#include "platform/zmainwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QLineEdit>
#include <QVBoxLayout>

#include <cstdlib>
#include <limits>
#include <utility>

namespace
{

/// A main widget driven by keys, with a menu on the left soft key.
class Window : public ZKbMainWidget
{
public:
    Window() : ZKbMainWidget(TitleUnderlined, nullptr, "Main", {})
    {
        hide();
        qApp->installEventFilter(this);
        contentLayout()->addWidget(content);
        bar = new ZSoftKey(QString(), this, this);
        setSoftKey(bar);
        bar->setOptMenu(ZSoftKey::Left, &menu);
        menu.insertItem("item", nullptr, {}, true, 1, -1);
    }

    ZOptionsMenu menu{QRect(), nullptr, nullptr, {}, ZSkinService::clsOptionsMenu};
    QWidget* content = new QWidget;
    QLineEdit* field = new QLineEdit(content);
    ZSoftKey* bar = nullptr;
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys.append(PhoneKey::code(*event)); }
};

QImage pictureOf(QWidget& widget)
{
    return widget.grab().toImage();
}

/// The first and last column with something else than the background in the header's upper part.
std::pair<int, int> textColumns(const QImage& picture)
{
    int first = -1;
    int last = -1;
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < ZSkinService::HeaderHeight - 3; ++y) {
            if (picture.pixel(x, y) == picture.pixel(0, 0))
                continue;
            first = first < 0 ? x : first;
            last = x;
        }
    }
    return {first, last};
}

bool isUnderlined(const QImage& picture)
{
    return picture.pixelColor(5, ZSkinService::HeaderHeight - 1) ==
           ZSkinService::look(ZSkinService::clsMainWidget).highlight;
}

} // namespace

class tst_ZMainWidget : public QObject
{
    Q_OBJECT

private slots:
    void fillsTheScreen()
    {
        ZMainWidget main(ZMainWidget::TitleCentred, nullptr, "Name", {});
        main.show();
        QCOMPARE(main.geometry(), QRect(0, 0, 240, 320));
        QCOMPARE(main.objectName(), QString("Name"));
        QCOMPARE(ZScreen::instance()->active(), &main);
    }

    void headerTypeDecidesTheLook_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("expected");
        QTest::newRow("left") << 1 << 1;
        QTest::newRow("centred") << 2 << 2;
        QTest::newRow("underlined") << 3 << 3;
        QTest::newRow("unknown") << 4 << 3;
        QTest::newRow("negative") << -1 << 3;
        QTest::newRow("largest") << std::numeric_limits<int>::max() << 3;
    }

    void headerTypeDecidesTheLook()
    {
        QFETCH(int, type);
        QFETCH(int, expected);
        ZMainWidget main(type, nullptr, nullptr, {});
        main.contentLayout()->addWidget(new QWidget);
        main.setMainWidgetTitle("Title");
        main.show();
        QCOMPARE(main.headerType(), expected);
        QCOMPARE(main.mainWidgetTitle(), QString("Title"));
        const QImage picture = pictureOf(main);
        const auto [first, last] = textColumns(picture);
        QVERIFY(first >= 0);
        if (expected == ZMainWidget::TitleLeft)
            QVERIFY2(first < 15, qPrintable(QString::number(first)));
        else
            QVERIFY2(std::abs(first + last - 239) <= 6, qPrintable(QString::number(first + last)));
        QCOMPARE(isUnderlined(picture), expected == ZMainWidget::TitleUnderlined);
    }

    void headerTypeNoneGivesTheRoomToTheContent()
    {
        ZMainWidget main(ZMainWidget::NoHeader, nullptr, nullptr, {});
        auto* content = new QWidget;
        main.contentLayout()->addWidget(content);
        main.show();
        QCOMPARE(content->geometry(), QRect(0, 0, 240, 320));
        main.setHeaderType(ZMainWidget::TitleLeft);
        QTRY_COMPARE(content->geometry(), QRect(0, 20, 240, 300));
    }

    void fullScreenTakesTheHeaderAway()
    {
        Window main;
        main.show();
        QCOMPARE(main.content->y(), ZSkinService::HeaderHeight);
        QVERIFY(!main.isFullScreenMode());
        main.fullScreenModeChanged(true);
        QVERIFY(main.isFullScreenMode());
        QTRY_COMPARE(main.content->y(), 0);
        QCOMPARE(main.bar->geometry(), QRect(0, 300, 240, 20));
        main.setHeaderType(ZMainWidget::TitleLeft);
        main.fullScreenModeChanged(false);
        QTRY_COMPARE(main.content->y(), ZSkinService::HeaderHeight);
        QCOMPARE(main.headerType(), int(ZMainWidget::TitleLeft));
    }

    void fullScreenWithoutHeaderChangesNothing()
    {
        ZMainWidget main(ZMainWidget::NoHeader, nullptr, nullptr, {});
        auto* content = new QWidget;
        main.contentLayout()->addWidget(content);
        main.fullScreenModeChanged(true);
        main.fullScreenModeChanged(false);
        main.show();
        QCOMPARE(content->geometry(), QRect(0, 0, 240, 320));
    }

    void titleIsShownAsItIs_data()
    {
        QTest::addColumn<QString>("title");
        QTest::newRow("empty") << "";
        QTest::newRow("percent and markup") << "<b>%1</b> & %2";
        QTest::newRow("endless") << QString(100000, 'W');
        QTest::newRow("lines") << "one\ntwo";
    }

    void titleIsShownAsItIs()
    {
        QFETCH(QString, title);
        ZMainWidget main(ZMainWidget::TitleCentred, nullptr, nullptr, {});
        main.contentLayout()->addWidget(new QWidget);
        main.setMainWidgetTitle(title);
        main.show();
        QCOMPARE(main.mainWidgetTitle(), title);
        QCOMPARE(pictureOf(main).size(), QSize(240, 320));
        QCOMPARE(textColumns(pictureOf(main)).first < 0, title.isEmpty());
        QCOMPARE(main.geometry(), QRect(0, 0, 240, 320));
    }

    void titleThatIsTooLongEndsInAnEllipsis_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("left") << int(ZMainWidget::TitleLeft);
        QTest::newRow("underlined") << int(ZMainWidget::TitleUnderlined);
    }

    void titleThatIsTooLongEndsInAnEllipsis()
    {
        QFETCH(int, type);
        ZMainWidget main(type, nullptr, "Main", {});
        main.show();
        main.setMainWidgetTitle(QString(100, 'W'));
        const QList<DrawnText> drawn = textsDrawnBy(main);
        QCOMPARE(drawn.size(), 1);
        QVERIFY(drawn.first().text.endsWith(QChar(0x2026)));
        QCOMPARE(misplaced(drawn, main.rect()), QString());
    }

    void softKeyWorksWhereverTheFocusIs_data()
    {
        QTest::addColumn<bool>("inField");
        QTest::newRow("in the main widget") << false;
        QTest::newRow("in a field") << true;
    }

    void softKeyWorksWhereverTheFocusIs()
    {
        QFETCH(bool, inField);
        Window main;
        main.show();
        (inField ? static_cast<QWidget*>(main.field) : &main)->setFocus();
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(main.menu.isVisible());
        QVERIFY(main.keys.isEmpty());
    }

    void softKeyWithoutMenuIsLeftToTheWidget()
    {
        Window main;
        main.show();
        main.setFocus();
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(main.keys, QList<int>{PhoneKey::SoftRight});
        main.bar->setOptMenu(ZSoftKey::Left, nullptr);
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(!main.menu.isVisible());
        QCOMPARE(main.keys, QList<int>({PhoneKey::SoftRight, PhoneKey::SoftLeft}));
    }

    void softKeyThatSomebodyAnswersIsAnsweredOnce()
    {
        Window main;
        main.show();
        main.field->setFocus();
        main.bar->setOptMenu(ZSoftKey::Left, nullptr);
        QList<int> answered;
        connect(main.bar, &ZSoftKey::pressed, &main, [&answered](int key) { answered += key; });
        pressKey(PhoneKey::SoftRight);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(answered, QList<int>({ZSoftKey::Right, ZSoftKey::Left}));
        QVERIFY(main.keys.isEmpty());
    }

    void otherKeysAreLeftToTheWidget()
    {
        Window main;
        main.show();
        main.setFocus();
        for (const int code : {int('5'), int('*'), int('#'), int(PhoneKey::Modifier)})
            pressKey(code);
        QCOMPARE(main.keys, QList<int>({'5', '*', '#', PhoneKey::Modifier}));
        QVERIFY(!main.menu.isVisible());
    }

    void softKeyDoesNothingWhileABoxIsUp()
    {
        Window main;
        main.show();
        QWidget box(ZScreen::instance());
        box.hide();
        ZScreen::instance()->place(&box, ZScreen::Layer::Box);
        box.show();
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(!main.menu.isVisible());
        box.hide();
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(main.menu.isVisible());
    }

    void softKeyOfTheOpenMenuChoosesInIt()
    {
        Window main;
        main.show();
        pressKey(PhoneKey::SoftLeft);
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(!main.menu.isVisible());
        QCOMPARE(main.menu.getActiveItemId(), 1);
    }
};

QUARN_TEST_MAIN(tst_ZMainWidget)
#include "tst_zmainwidget.moc"
