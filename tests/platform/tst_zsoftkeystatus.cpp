#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/platform/softkeyfixture.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <memory>

/// The status at the right of the soft-key bar.
class tst_ZSoftKeyStatus : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<SoftKeyFixture>();
        bar_ = fixture_->bar;
        bar_->setText(ZSoftKey::Left, "Options");
        left_ = inkOf(picture());
    }

    void cleanup() { fixture_.reset(); }

    void nameAndTextStandAtTheRight()
    {
        bar_->setStatus("Music", "7/202");
        QCOMPARE(bar_->shownStatus(), QStringList({"Music", "7/202"}));
        const QImage both = picture();
        const QRect ink = inkOf(both);
        QCOMPARE(ink.left(), left_.left());
        QVERIFY(ink.right() >= 228 && ink.right() < 236);
        bar_->setStatus(QString(), QString());
        QCOMPARE(inkOf(picture()), left_);
    }

    void eitherMayBeMissing()
    {
        bar_->setStatus(QString(), "202");
        QCOMPARE(bar_->shownStatus(), QStringList({QString(), "202"}));
        QVERIFY(inkOf(picture()).right() > 220);
        bar_->setStatus("Music", QString());
        QCOMPARE(bar_->shownStatus(), QStringList({"Music", QString()}));
        QVERIFY(inkOf(picture()).right() > 220);
    }

    void itIsGreyAndSmall()
    {
        bar_->setText(ZSoftKey::Left, QString());
        bar_->setStatus("H", QString());
        const QImage status = picture();
        for (int y = 0; y < status.height(); ++y) {
            for (int x = 0; x < status.width(); ++x) {
                const QColor colour = status.pixelColor(x, y);
                QVERIFY(colour.red() <= 0xb8 && colour.green() <= 0xbd && colour.blue() <= 0xc6);
            }
        }
        const int height = inkOf(status).height();
        bar_->setStatus(QString(), QString());
        bar_->setText(ZSoftKey::Right, "H");
        QVERIFY(height < inkOf(picture()).height());
    }

    void longNameLosesItsBeginning()
    {
        bar_->setStatus(QString(100, 'x') + "end", "7/202");
        const QStringList shown = bar_->shownStatus();
        QVERIFY(shown.first().endsWith("end"));
        QVERIFY(shown.first().size() < 30);
        QCOMPARE(shown.last(), QString("7/202"));
    }

    void itNeverMeetsTheTextOfTheKey_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        const QString endless(300, 'W');
        for (const auto& key : {QString("Options"), QString("Optionsoptionsopti"), endless}) {
            for (const auto& name : {QString("Music"), endless}) {
                for (const auto& text : {QString("7/202"), QString("99999/100000"),
                                         QString("12345678 to move"), endless})
                    QTest::addRow("%d %d %d", int(key.size()), int(name.size()), int(text.size()))
                        << key << name << text;
            }
        }
    }

    void itNeverMeetsTheTextOfTheKey()
    {
        QFETCH(QString, key);
        QFETCH(QString, name);
        QFETCH(QString, text);
        bar_->setText(ZSoftKey::Left, key);
        const QImage alone = picture();
        const int end = inkOf(alone).right() + 1;
        bar_->setStatus(name, text);
        const QImage both = picture();
        // What is the key's looks as it did, and some ground is behind it.
        const int free = std::min(end + 8, 240);
        QVERIFY(both.copy(0, 0, free, 20) == alone.copy(0, 0, free, 20));
        const QString shown = bar_->shownStatus().last();
        QVERIFY2(shown.isEmpty() || shown == text, "cut text");
        QVERIFY(inkOf(both).right() <= 235);
    }

    void withoutRoomForTheTextThereIsNone()
    {
        bar_->setStatus("Music", QString(300, '1'));
        QCOMPARE(bar_->shownStatus(), QStringList({QString(), QString()}));
        QCOMPARE(inkOf(picture()), left_);
    }

    void nameWithHardlyAnyRoomIsLeftOut()
    {
        bar_->setText(ZSoftKey::Left, "Optionsoptionsoptions");
        bar_->setStatus("Wonderland", "7/202");
        const QStringList shown = bar_->shownStatus();
        QCOMPARE(shown.last(), QString("7/202"));
        QVERIFY2(shown.first().isEmpty() || shown.first().size() > 2, qPrintable(shown.first()));
    }

    void textOfTheRightKeyTakesItsPlace()
    {
        bar_->setStatus("Music", "7/202");
        bar_->setText(ZSoftKey::Right, "Back");
        QCOMPARE(bar_->shownStatus(), QStringList({QString(), QString()}));
        bar_->setText(ZSoftKey::Right, QString());
        QCOMPARE(bar_->shownStatus(), QStringList({"Music", "7/202"}));
    }

    void whileSomethingElseHasTheKeysThereIsNone()
    {
        bar_->setStatus("Music", "7/202");
        const QImage before = picture();
        const auto menu = makeMenu(2);
        menu->show();
        QCOMPARE(bar_->shownStatus(), QStringList({QString(), QString()}));
        menu->closeAll();
        QCOMPARE(bar_->shownStatus(), QStringList({"Music", "7/202"}));
        QVERIFY(picture() == before);
        const ZScreen::MainInputPause pause;
        QCOMPARE(bar_->shownStatus(), QStringList({QString(), QString()}));
        QVERIFY(isPlain(picture(), bar_->rect(), ground()));
    }

    void nothingIsPaintedUnlessItLooksDifferent()
    {
        PaintCounter painted(bar_);
        QTRY_VERIFY(painted.count > 0);
        int before = painted.count;
        const auto isPaintedBy = [&](const QString& name, const QString& text) {
            bar_->setStatus(name, text);
            QCoreApplication::processEvents();
            return painted.count > std::exchange(before, painted.count);
        };
        QVERIFY(isPaintedBy("Music", "7/202"));
        QVERIFY(!isPaintedBy("Music", "7/202"));
        QVERIFY(isPaintedBy("Music", "8/202"));
        QVERIFY(isPaintedBy(QString(100, 'y') + "end", "8/202"));
        // Of these only the end is seen.
        QVERIFY(!isPaintedBy(QString(200, 'y') + "end", "8/202"));
        QVERIFY(isPaintedBy(QString(), QString()));
    }

    void namesAreShownWithMarks()
    {
        bar_->setStatus(QString("a\nb") + QChar(0xdc80), "1");
        QCOMPARE(bar_->shownStatus().first(), QString::fromUtf8("a\u240Ab\uFFFD"));
    }

    void readersAreToldTheWholeOfIt()
    {
        bar_->setStatus(QString(100, 'x'), "7/202");
        QCOMPARE(bar_->accessibleDescription(), QString(100, 'x') + ", 7/202");
        bar_->setStatus(QString(), QString());
        QCOMPARE(bar_->accessibleDescription(), QString());
    }

private:
    static QColor ground() { return ZSkinService::look(ZSkinService::clsSoftKey).background; }
    QImage picture() const { return bar_->grab().toImage(); }
    QRect inkOf(const QImage& picture) const { return inkBounds(picture, bar_->rect(), ground()); }
    std::unique_ptr<SoftKeyFixture> fixture_;
    ZSoftKey* bar_ = nullptr;
    QRect left_;
};

QUARN_TEST_MAIN(tst_ZSoftKeyStatus)
#include "tst_zsoftkeystatus.moc"
