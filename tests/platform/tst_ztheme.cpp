#include "platform/zlistbox.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"
#include "tests/platform/listfixture.h"
#include "tests/support/contrast.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

namespace
{

/// The colour of an area that differs most from its ground.
QColor inkOn(const QImage& picture, const QRect& area, const QColor& ground)
{
    QColor found = ground;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (contrast(picture.pixelColor(x, y), ground) > contrast(found, ground))
                found = picture.pixelColor(x, y);
        }
    }
    return found;
}

void addThemes()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("light") << int(ZTheme::Light);
    QTest::newRow("dark") << int(ZTheme::Dark);
}

/// What a list with rows in every state looks like: the first is the current one, the second is
/// like others, the third is disabled; behind them are more than fit.
struct Shown {
    Shown()
    {
        list.layout = QStringLiteral("%I%M100%C");
        for (int row = 0; row < 40; ++row)
            list.add(QStringLiteral("HHHHHHH"), -1, QStringLiteral("HHH\t\tHHH"));
        list.box->item(2)->setEnabled(false);
        list.box->setCurrentItem(0);
        picture = list.box->grab().toImage();
    }

    /// The place of a row's texts: the first line, or the second.
    QRect line(int row, bool second) const
    {
        const int height = list.box->rowHeight();
        return {10, row * height + (second ? height / 2 + 2 : 1), 90, height / 2 - 4};
    }

    QColor ground(int row) const
    {
        return picture.pixelColor(180, row * list.box->rowHeight() + 3);
    }

    ListFixture list;
    QImage picture;
};

} // namespace

class tst_ZTheme : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ZTheme::choose(ZTheme::Light); }

    void isLightUntilAnotherIsChosen()
    {
        QCOMPARE(ZTheme::current().ground, QColor(Qt::white));
        QCOMPARE(ZSkinService::look(ZSkinService::clsListBox).background, QColor(Qt::white));
        ZTheme::choose(ZTheme::Dark);
        QVERIFY(ZTheme::current().ground.lightness() < 40);
        QCOMPARE(ZSkinService::look(ZSkinService::clsListBox).background,
                 ZTheme::of(ZTheme::Dark).ground);
    }

    void everyTextCanBeReadOnItsGround_data() { addThemes(); }

    void everyTextCanBeReadOnItsGround()
    {
        QFETCH(int, kind);
        const ZTheme& theme = ZTheme::of(ZTheme::Kind(kind));
        const std::pair<QColor, QColor> pairs[] = {
            {theme.text, theme.ground},
            {theme.secondText, theme.ground},
            {theme.highlightText, theme.highlight},
            {theme.secondText, theme.highlight},
            {theme.selectionText, theme.selection},
            {theme.barText, theme.bar},
            {theme.barSecondText, theme.bar},
            {theme.barWarning, theme.bar},
            {theme.bar, theme.barMark},
            {theme.warning, theme.ground},
            {theme.done, theme.ground},
        };
        for (const auto& [text, ground] : pairs) {
            QVERIFY2(contrast(text, ground) >= ContrastOfTexts,
                     qPrintable(text.name() + " on " + ground.name()));
        }
        ZTheme::choose(ZTheme::Kind(kind));
        for (const unsigned cls :
             {ZSkinService::clsListBox, ZSkinService::clsDarkListBox, ZSkinService::clsMainWidget,
              ZSkinService::clsNavTab, ZSkinService::clsOptionsMenu}) {
            const auto& look = ZSkinService::look(cls);
            QVERIFY(contrast(look.text, look.background) >= ContrastOfTexts);
            QVERIFY(contrast(look.secondaryText, look.background) >= ContrastOfTexts);
            QVERIFY(contrast(look.disabledText, look.background) >= ContrastOfTexts);
            QVERIFY(contrast(look.highlightText, look.highlight) >= ContrastOfTexts);
        }
    }

    void everyStateStandsOutFromItsNeighbour_data() { addThemes(); }

    void everyStateStandsOutFromItsNeighbour()
    {
        QFETCH(int, kind);
        const ZTheme& theme = ZTheme::of(ZTheme::Kind(kind));
        const std::pair<QColor, QColor> pairs[] = {
            {theme.mark, theme.ground},    {theme.mark, theme.highlight},
            {theme.thumb, theme.ground},   {theme.thumb, theme.highlight},
            {theme.outline, theme.ground}, {theme.selection, theme.ground},
            {theme.barMark, theme.bar},    {theme.barMark, theme.barTrack},
        };
        for (const auto& [state, neighbour] : pairs) {
            QVERIFY2(contrast(state, neighbour) >= ContrastOfStates,
                     qPrintable(state.name() + " beside " + neighbour.name()));
        }
        ZTheme::choose(ZTheme::Kind(kind));
        for (const unsigned cls : {ZSkinService::clsListBox, ZSkinService::clsDarkListBox}) {
            const auto& look = ZSkinService::look(cls);
            for (const QColor& ground : {look.background, look.highlight}) {
                QVERIFY(contrast(look.mark, ground) >= ContrastOfStates);
                QVERIFY(contrast(look.thumb, ground) >= ContrastOfStates);
            }
            // The sign of a warning, whose bar has this ground, and the mark on it.
            QVERIFY(cls == ZSkinService::clsListBox ||
                    contrast(theme.barWarning, look.highlight) >= ContrastOfStates);
        }
        // A tab's mark is a part of it and beside the next one.
        const auto& tab = ZSkinService::look(ZSkinService::clsNavTab);
        QVERIFY(contrast(tab.mark, tab.highlight) >= ContrastOfStates);
        QVERIFY(contrast(tab.mark, tab.background) >= ContrastOfStates);
    }

    void listIsReadableAsItIsPainted_data() { addThemes(); }

    void listIsReadableAsItIsPainted()
    {
        QFETCH(int, kind);
        ZTheme::choose(ZTheme::Kind(kind));
        const Shown shown;
        QVERIFY(shown.ground(0) != shown.ground(1));
        QCOMPARE(shown.ground(2), shown.ground(1));
        for (const int row : {0, 1, 2}) {
            for (const bool second : {false, true}) {
                const QColor ground = shown.ground(row);
                const QColor ink = inkOn(shown.picture, shown.line(row, second), ground);
                QVERIFY2(contrast(ink, ground) >= ContrastOfTexts,
                         qPrintable(QStringLiteral("row %1, %2: %3 on %4")
                                        .arg(row)
                                        .arg(second)
                                        .arg(ink.name(), ground.name())));
            }
        }
    }

    void statesOfTheListStandOutAsTheyArePainted_data() { addThemes(); }

    void statesOfTheListStandOutAsTheyArePainted()
    {
        QFETCH(int, kind);
        ZTheme::choose(ZTheme::Kind(kind));
        const Shown shown;
        const int height = shown.list.box->rowHeight();
        // The current row: a bar over its whole height, beside its own ground and above another's.
        const QColor bar = shown.picture.pixelColor(0, 0);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < ZSkinService::MarkWidth; ++x)
                QCOMPARE(shown.picture.pixelColor(x, y), bar);
        }
        QVERIFY(contrast(bar, shown.ground(0)) >= ContrastOfStates);
        QVERIFY(contrast(bar, shown.picture.pixelColor(0, height + 1)) >= ContrastOfStates);
        QCOMPARE(shown.picture.pixelColor(0, height + 1), shown.ground(1));
        // The thumb of the scroll bar, at its top beside the current row.
        const int right = shown.picture.width() - 1;
        QVERIFY(contrast(shown.picture.pixelColor(right, 1), shown.ground(0)) >= ContrastOfStates);
        QVERIFY(contrast(shown.picture.pixelColor(right, height + 1), shown.ground(1)) >=
                ContrastOfStates);
        // A check box, and what tells a checked one.
        const QRect box(220, height, 14, height - 1);
        QVERIFY(contrast(inkOn(shown.picture, box, shown.ground(1)), shown.ground(1)) >=
                ContrastOfStates);
        // One that cannot be checked is seen, too, and is another one.
        const QRect disabled = box.translated(0, height);
        QVERIFY(contrast(inkOn(shown.picture, disabled, shown.ground(2)), shown.ground(2)) >=
                ContrastOfStates);
        QVERIFY(shown.picture.pixelColor(disabled.center()) !=
                shown.picture.pixelColor(box.center()));
        shown.list.box->item(1)->setChecked(true);
        const QImage checked = shown.list.box->grab().toImage();
        const QPoint inside(box.left() + 3, height + height / 2 + 4);
        QVERIFY(contrast(checked.pixelColor(inside), shown.picture.pixelColor(inside)) >=
                ContrastOfStates);
    }

    void iconOfADisabledRowIsFaint_data() { addThemes(); }

    void iconOfADisabledRowIsFaint()
    {
        QFETCH(int, kind);
        ZTheme::choose(ZTheme::Kind(kind));
        ListFixture list;
        for (int row = 0; row < 3; ++row) {
            list.add("name", -1);
            list.box->item(row)->setPixmap(0, coloured(Qt::blue));
        }
        list.box->item(2)->setEnabled(false);
        list.box->setCurrentItem(0);
        const QImage picture = list.box->grab().toImage();
        const int height = list.box->rowHeight();
        const QPoint middle(ZSkinService::MarkWidth + 1 + 8, height / 2);
        QCOMPARE(picture.pixelColor(middle + QPoint(0, height)), QColor(Qt::blue));
        const QColor faint = picture.pixelColor(middle + QPoint(0, 2 * height));
        const QColor ground = ZTheme::current().ground;
        // Four tenths of it.
        QVERIFY(qAbs(faint.blue() - (255 * 4 + ground.blue() * 6) / 10) <= 2);
        QVERIFY(qAbs(faint.red() - ground.red() * 6 / 10) <= 2);
    }

    void rowsArePartedByAHairline_data() { addThemes(); }

    void rowsArePartedByAHairline()
    {
        QFETCH(int, kind);
        ZTheme::choose(ZTheme::Kind(kind));
        const Shown shown;
        const int height = shown.list.box->rowHeight();
        const auto at = [&shown](int y) { return shown.picture.pixelColor(150, y); };
        // None where the ground parts them already.
        QCOMPARE(at(height - 1), shown.ground(0));
        QCOMPARE(at(2 * height - 1), ZTheme::current().hairline);
        QCOMPARE(at(2 * height - 2), shown.ground(1));
        QCOMPARE(at(2 * height), shown.ground(2));
    }
};

QUARN_TEST_MAIN(tst_ZTheme)
#include "tst_ztheme.moc"
