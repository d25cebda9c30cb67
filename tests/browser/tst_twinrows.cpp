#include "browser/filebrowserftab.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/bytefiles.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

// How rows show names that are no text.

namespace
{

/// The part of a row behind its icon.
constexpr int TextLeft = 22;

} // namespace

class tst_TwinRows : public QObject
{
    Q_OBJECT

private slots:
    void init() { panel_ = std::make_unique<PanelFixture>(); }
    void cleanup()
    {
        emptyFolder(folder());
        panel_.reset();
    }

    void eachByteThatIsNoTextIsOneMark_data()
    {
        QTest::addColumn<QByteArray>("byte");
        for (const char* byte : {"\x80", "\xa0", "\xad", "\xbf", "\xc3", "\xe2", "\xf0", "\xff"})
            QTest::addRow("%02x", uint(uchar(*byte))) << QByteArray(byte);
    }

    void eachByteThatIsNoTextIsOneMark()
    {
        QFETCH(QByteArray, byte);
        const QList<QByteArray> names{"nn", "n" + byte + "n", "n" + byte + byte + "n",
                                      "n" + byte + byte + byte + "n"};
        const QList<QRect> inks = inksOf(names);
        const int mark = inks.at(1).width() - inks.at(0).width();
        QVERIFY2(mark >= 3, qPrintable(QString::number(mark)));
        // Kerning and rounding move an edge by a pixel.
        QVERIFY(qAbs(inks.at(2).width() - inks.at(1).width() - mark) <= 1);
        QVERIFY(qAbs(inks.at(3).width() - inks.at(2).width() - mark) <= 1);
    }

    void marksAreAlikeWhateverTheByteIs()
    {
        const QList<QRect> inks = inksOf({"n\x80n", "n\xa5n", "n\xffn"});
        QCOMPARE(inks.at(1).width(), inks.at(0).width());
        QCOMPARE(inks.at(2).width(), inks.at(0).width());
    }

    void cutCharacterHasAMarkForEachOfItsBytes()
    {
        const QList<QRect> inks = inksOf({"n\x80n", "n\xf0\x9f\x98n", "n\x80\x80\x80n"});
        QVERIFY(inks.at(1).width() > inks.at(0).width());
        QCOMPARE(inks.at(1).width(), inks.at(2).width());
    }

    void byteOrderMarkIsOneMarkToo()
    {
        const QList<QRect> inks = inksOf({"n\x80n", "n\xef\xbb\xbfn",
                                          "\xef\xbb\xbf"
                                          "n",
                                          "nn"});
        QCOMPARE(inks.at(1).width(), inks.at(0).width());
        QVERIFY(inks.at(2).width() > inks.at(3).width() / 2 + 3);
    }

    void nameThatIsNoTextAtAllIsShown()
    {
        const QList<QRect> inks = inksOf({"\x80", "\xff\xfe"});
        QVERIFY(inks.at(0).width() >= 3 && inks.at(0).height() >= 3);
        QVERIFY(inks.at(1).width() > inks.at(0).width());
    }

private:
    QByteArray folder() const { return panel_->files().path().toLocal8Bit(); }

    /// Where the names' rows are not blank, each row in a listing with the others.
    QList<QRect> inksOf(const QList<QByteArray>& names)
    {
        for (const QByteArray& name : names)
            writeFile(folder() + '/' + name, QByteArray());
        panel_->panel()->setDir(panel_->files().path(), 0);
        const QList<QByteArray> rows = rowsOf(folder());
        if (panel_->panel()->count() != rows.size())
            return QList<QRect>(names.size());
        const QImage picture = panel_->panel()->viewport()->grab().toImage();
        const int height = panel_->panel()->rowHeight();
        QList<QRect> inks;
        for (const QByteArray& name : names) {
            const int top = int(rows.indexOf(name)) * height;
            const QRect area(TextLeft, top + 1, picture.width() - TextLeft - 10, height - 2);
            inks += inkBounds(picture, area, picture.pixelColor(area.right(), area.bottom()));
        }
        return inks;
    }

    std::unique_ptr<PanelFixture> panel_;
};

QUARN_TEST_MAIN(tst_TwinRows)
#include "tst_twinrows.moc"
