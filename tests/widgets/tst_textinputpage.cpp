#include "files/names.h"
#include "tests/support/testmain.h"
#include "tests/widgets/textinputtest.h"

#include <QTextDocument>

#include <algorithm>

namespace
{

using PhoneKey::Code;

// The page's pieces.
const QString Table =
    R"(<table width="100%" border="0" cellspacing="0" cellpadding="0" bgcolor="#000000"><tr>)";
const QString TitleStart = Table + R"(<td align="center" >)";
const QString TitleFont = R"(<font size="4" color="#eeeeee"><b>)";
const QString TitleEnd = "</b></font></td></tr></table>";
const QString CellStart = R"(<td align="center" ><font size="3" color="#eeeeee">)";
const QString CellEnd = "</font></td>";

QString titlePiece(const QString& image, const QString& title)
{
    return TitleStart + image + TitleFont + title + TitleEnd;
}

QString promptPiece(const QString& prompt)
{
    return R"(<p align="center" >)" + prompt + "</p>";
}

QString keyBarPiece(const QString& yes, const QString& no)
{
    return "<br><br><br>" + Table + CellStart + yes + CellEnd + CellStart + no + CellEnd +
           "</tr></table>";
}

/// The height of a page of the dialog's width.
int pageHeight(const QString& html, const QFont& font)
{
    QLabel label;
    label.setFont(font);
    label.setTextFormat(Qt::RichText);
    label.setWordWrap(true);
    label.setText(html);
    return label.heightForWidth(220);
}

/// What a reader sees of a page.
QString readText(const QString& html)
{
    QTextDocument page;
    page.setHtml(html);
    return page.toPlainText();
}

} // namespace

class tst_TextInputPage : public TextInputTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void pageHasTitlePromptAndKeyBar()
    {
        look("Rename", "New name:", "res/img/rename.png");
        const QString image = "<img src=" + folder_->path("res/img/rename.png") + " ><br>";
        QCOMPARE(html_,
                 titlePiece(image, "Rename") + promptPiece("New name:") + keyBarPiece("Yes", "No"));
    }

    void pageWithoutIconHasNoImage()
    {
        look("Rename", "New name:", QString());
        QCOMPARE(html_, titlePiece(QString(), "Rename") + promptPiece("New name:") +
                            keyBarPiece("Yes", "No"));
        QVERIFY(boundsOf(picture_, Qt::blue).isEmpty());
    }

    void answersHaveTheirTexts()
    {
        dialog_ = std::make_unique<TextInput>(folder_->path() + '/');
        dialog_->yesText = "Ja";
        dialog_->noText = "Nein";
        dialog_->Init();
        look("T", "P", QString());
        QVERIFY(html_.endsWith(keyBarPiece("Ja", "Nein")));
    }

    void titleIsLightOnBlackAndTheRestOnWhite()
    {
        look("Rename", "New name:", "res/img/rename.png");
        const QRect page = viewGeometry_;
        const QRect image = boundsOf(picture_, Qt::blue);
        QCOMPARE(image.size(), QSize(20, 10));
        QVERIFY(isNear(image, QRect(QPoint(page.center().x() - 10, image.top()), image.size())));
        QVERIFY(image.top() - page.top() <= 4);
        // Beside the image, beside the prompt, in the key bar.
        QCOMPARE(picture_.pixelColor(page.left() + 4, image.center().y()), QColor(Qt::black));
        QCOMPARE(picture_.pixelColor(page.right() - 4, image.center().y()), QColor(Qt::black));
        QCOMPARE(picture_.pixelColor(page.left() + 4, editGeometry_.top() - 4), QColor(Qt::white));
        QCOMPARE(picture_.pixelColor(page.left() + 4, page.bottom() - 2), QColor(Qt::black));
        QCOMPARE(picture_.pixelColor(page.right() - 4, page.bottom() - 2), QColor(Qt::black));
    }

    void iconIsShownWhateverItsFolderIsCalled_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"plain", "with blanks in it", "a>b", "\"quoted\"", "'quoted'",
                                 "100%", "%20", "a#b?c", "a&amp;b", "c:d", "back\\slash"})
            QTest::newRow(name) << name;
        QTest::newRow("letters") << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC");
    }

    void iconIsShownWhateverItsFolderIsCalled()
    {
        QFETCH(QString, name);
        folder_->write(name + "/icon.png", plainPng(20, 10, Qt::blue));
        dialog_.reset();
        makeDialog(folder_->path(name) + '/');
        look("Rename", "New name:", "icon.png");
        QCOMPARE(boundsOf(picture_, Qt::blue).size(), QSize(20, 10));
    }

    void iconOfAFolderWhoseNameIsNoTextIsItsOwn()
    {
        const QString odd = decodeName("odd\xFF");
        folder_->write(odd + "/icon.png", plainPng(20, 10, Qt::blue));
        // What the name would be taken for.
        folder_->write(QString("odd\uFFFD/icon.png"), plainPng(20, 10, Qt::red));
        dialog_.reset();
        makeDialog(folder_->path(odd) + '/');
        look("Rename", "New name:", "icon.png");
        QCOMPARE(boundsOf(picture_, Qt::blue).size(), QSize(20, 10));
    }

    void dialogWithAMissingIconWorks()
    {
        QCOMPARE(openAnd([] { pressKey(Code::SoftLeft); }, "Rename", "Name", "res/img/none.png"),
                 1);
    }

    void titleAndPromptAreNoMarkup()
    {
        const QString odd = R"(<b>bold</b> & &lt; "q" <img src=/x> %1 <hr>)";
        look(odd, odd, QString());
        const QStringList lines = readText(html_).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.at(0), odd);
        QCOMPARE(lines.at(1), odd);
        QCOMPARE(lines.size(), 4); // and the answers
    }

    void fieldSitsBetweenPromptAndKeyBar_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("icon");
        QTest::newRow("short") << "Name:"
                               << "res/img/rename.png";
        QTest::newRow("without icon") << "Name:" << QString();
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("of several lines") << QString("some words ").repeated(15) << QString();
        QTest::newRow("a long word") << QString(255, QLatin1Char('W')) << "res/img/rename.png";
        QTest::newRow("just too high") << QString() << "res/img/high.png";
        QTest::newRow("too high") << QString("many words ").repeated(80) << "res/img/rename.png";
    }

    void fieldSitsBetweenPromptAndKeyBar()
    {
        QFETCH(QString, prompt);
        QFETCH(QString, icon);
        folder_->write("res/img/high.png", plainPng(20, 260, Qt::blue));
        look("T", prompt, icon);
        const QString image =
            icon.isEmpty() ? QString() : "<img src=" + folder_->path(icon) + " ><br>";
        const QString page = titlePiece(image, "T") + promptPiece(prompt.toHtmlEscaped());
        const int h1 = pageHeight(page, dialog_->font());
        const int h2 = pageHeight(page + keyBarPiece("Yes", "No"), dialog_->font());
        QCOMPARE(labelHeight_, h2);
        QCOMPARE(fieldInLabel_, QPoint(1, h1));
        if (h2 >= 300)
            QCOMPARE(viewGeometry_, QRect(10, 10, 220, 300));
        else
            QCOMPARE(viewGeometry_, QRect(10, (320 - h2) / 2, 220, h2));
        QCOMPARE(h2 >= 300, QString(QTest::currentDataTag()).endsWith("too high"));
        // The room left for it is enough.
        QVERIFY(fieldInLabel_.y() + edit()->height() <= h2);
        QVERIFY2(viewGeometry_.contains(editGeometry_), "the field cannot be seen");
    }

    void pageOfExactlyTheLargestHeightCountsAsTooHigh()
    {
        int height = 0;
        for (int iconHeight = 100; height < 300; ++iconHeight) {
            const QString icon = QStringLiteral("res/img/%1.png").arg(iconHeight);
            folder_->write(icon, plainPng(4, iconHeight, Qt::blue));
            look("T", "P", icon);
            height = labelHeight_;
            QCOMPARE(viewGeometry_.top(), height < 300 ? (320 - height) / 2 : 10);
            QCOMPARE(viewGeometry_.height(), std::min(height, 300));
        }
    }

    void dialogOpensInItsPlaceAgainAfterAHigherOne()
    {
        look("T", "Name:", QString());
        const QRect place = viewGeometry_;
        look("T", QString("many words ").repeated(80), QString());
        QCOMPARE(viewGeometry_.height(), 300);
        look("T", "Name:", QString());
        QCOMPARE(viewGeometry_, place);
        QVERIFY(place.contains(editGeometry_));
    }

    void noScrollBarsAreShown()
    {
        look("T", QString(100, QLatin1Char('W')) + QString(" many words").repeated(80), QString());
        QCOMPARE(viewport_, QSize(220, 300));
    }

private:
    /// Opens the dialog, notes what it looks like, and cancels it.
    void look(const QString& title, const QString& prompt, const QString& icon)
    {
        openAnd(
            [this] {
                html_ = label()->text();
                labelHeight_ = label()->height();
                fieldInLabel_ = edit()->mapTo(label(), QPoint());
                viewport_ = view()->viewport()->size();
                viewGeometry_ = view()->geometry();
                editGeometry_ = {edit()->mapTo(dialog_.get(), QPoint()), edit()->size()};
                picture_ =
                    ZScreen::instance()->grab().toImage().convertToFormat(QImage::Format_RGB32);
                pressKey(Code::SoftRight);
            },
            title, prompt, icon);
    }

    // What look() has seen.
    QString html_;
    int labelHeight_ = 0;
    QPoint fieldInLabel_;
    QSize viewport_;
    QRect viewGeometry_;
    QRect editGeometry_;
    QImage picture_;
};

QUARN_TEST_MAIN(tst_TextInputPage)
#include "tst_textinputpage.moc"
