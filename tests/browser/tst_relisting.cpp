#include "browser/filebrowserftab.h"
#include "platform/zskinservice.h"
#include "shell/settings.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QFile>

#include <memory>

/// A panel that is listed anew after work on files: by names, not by rows.
class tst_Relisting : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        panel_ = std::make_unique<PanelFixture>();
        for (const char* name : {"b", "d", "f", "h"})
            panel_->files().write(QString::fromLatin1(name));
        list();
    }
    void cleanup()
    {
        panel_.reset();
        extras = Extras();
    }

    void highlightStaysOnTheName()
    {
        highlight("f");
        panel_->files().write("a");
        panel_->files().write("c");
        (*panel_)->relistByName({});
        QCOMPARE(current(), QString("f"));
        QVERIFY(panel_->fieldsFollow());
    }

    void highlightOfWhatIsGoneGoesToTheNextThatIsThere()
    {
        highlight("d");
        for (const char* name : {"d", "f"})
            QVERIFY(QFile::remove(panel_->files().path(name)));
        panel_->files().write("a");
        (*panel_)->relistByName({});
        QCOMPARE(current(), QString("h"));
    }

    void highlightOfTheLastGoesToTheNewLast()
    {
        highlight("h");
        QVERIFY(QFile::remove(panel_->files().path("h")));
        (*panel_)->relistByName({});
        QCOMPARE(current(), QString("f"));
    }

    void marksStayOnTheirNames()
    {
        (*panel_)->switchMultiSelect();
        list();
        check("d");
        check("h");
        highlight("b");
        panel_->files().write("a");
        QVERIFY(QFile::remove(panel_->files().path("d")));
        (*panel_)->relistByName({});
        QVERIFY((*panel_)->isMultiSelect());
        QCOMPARE((*panel_)->getChkFileList(), QStringList(panel_->files().path("h")));
        QCOMPARE(current(), QString("b"));
    }

    void withoutAnyMarkLeftThereIsNoModeForThem()
    {
        (*panel_)->switchMultiSelect();
        list();
        check("d");
        QVERIFY(QFile::remove(panel_->files().path("d")));
        (*panel_)->relistByName({});
        QVERIFY(!(*panel_)->isMultiSelect());
        QCOMPARE((*panel_)->getChkFileList(), QStringList());
    }

    void modeWithoutMarksStays()
    {
        (*panel_)->switchMultiSelect();
        list();
        (*panel_)->relistByName({});
        QVERIFY((*panel_)->isMultiSelect());
    }

    void otherNamesCanBeMarked()
    {
        highlight("d");
        (*panel_)->relistByName({panel_->files().path("f"), panel_->files().path("gone"),
                                 QStringLiteral("/elsewhere/b")});
        QVERIFY((*panel_)->isMultiSelect());
        QCOMPARE((*panel_)->getChkFileList(), QStringList(panel_->files().path("f")));
        QCOMPARE(current(), QString("d"));
    }

    void sizesAreWholeIfTheSettingsSaySo_data()
    {
        QTest::addColumn<bool>("safe");
        QTest::addColumn<QString>("size");
        QTest::newRow("as on the phone") << false << "1024 Mb";
        QTest::newRow("as they are") << true << "5 Gb";
    }

    void sizesAreWholeIfTheSettingsSaySo()
    {
        QFETCH(bool, safe);
        QFETCH(QString, size);
        extras.safe = safe;
        const PanelFixture panel(true);
        panel.files().writeSparse("big", qint64(5) << 30);
        panel->setDir(panel.files().path(), 0);
        QCOMPARE(panel.detail("big").section('\t', 0, 0), size);
    }

private:
    void list() const { (*panel_)->setDir(panel_->files().path(), 0); }
    void highlight(const char* name) const { (*panel_)->setCurrentItem(panel_->row(name)); }
    void check(const char* name) const
    {
        highlight(name);
        pressKey(PhoneKey::Return);
    }
    QString current() const { return panel_->names().value((*panel_)->currentItem()); }

    std::unique_ptr<PanelFixture> panel_;
};

QUARN_TEST_MAIN(tst_Relisting)
#include "tst_relisting.moc"
