#include "tests/fileops/copytest.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QBackingStore>

#include <algorithm>

namespace
{

/// What the display shows of the box of messages, one picture for each time that it is painted.
class PaintedBox : public QObject
{
public:
    struct Picture {
        QString text;
        QImage image;
    };

    PaintedBox() { textView->installEventFilter(this); }

    const QList<Picture>& pictures() const { return pictures_; }

    /// The texts painted, without repetitions that follow one another.
    QStringList texts() const
    {
        QStringList texts;
        for (const Picture& picture : pictures_) {
            if (texts.isEmpty() || texts.constLast() != picture.text)
                texts.append(picture.text);
        }
        return texts;
    }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            pictures_.append({textView->shownText(), QImage()});
            QCoreApplication::postEvent(this, new QEvent(QEvent::User));
        }
        return false;
    }

    /// The next time that work lets events run; what was painted is still there.
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        if (textView->isVisible())
            pictures_.last().image = now();
        return true;
    }

private:
    static QImage now()
    {
        const QWidget* window = ZScreen::instance()->window();
        const auto* device = static_cast<QImage*>(window->backingStore()->paintDevice());
        const QPoint place = textView->mapTo(window, QPoint());
        return device->copy(QRect(place, textView->size())).convertToFormat(QImage::Format_RGB32);
    }

    QList<Picture> pictures_;
};

QString completed(const QString& text)
{
    return text.section("Completed: ", 1);
}

} // namespace

class tst_CopyPictures : public CopyTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void everyBlockOfAFileIsPainted_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("empty") << 0LL;
        QTest::newRow("one byte") << 1LL;
        QTest::newRow("a block") << Block;
        QTest::newRow("600000") << 600000LL;
        QTest::newRow("many blocks") << 300 * Block;
        QTest::newRow("many blocks and a byte") << 300 * Block + 1;
    }

    void everyBlockOfAFileIsPainted()
    {
        QFETCH(qint64, size);
        writeFast("a", size);
        const PaintedBox painted;
        QVERIFY(window_->CopyFile(left("a"), right("a")));
        const QStringList shown = shownTexts();
        QCOMPARE(shown.size(), 2 + size / Block);
        QCOMPARE(painted.texts(), withoutRepetitions(shown));
        // The numbers of a block are painted also when they are those of the block before.
        QVERIFY(painted.pictures().size() >= shown.size());
    }

    void everyBlockOfATreeIsPainted()
    {
        for (int i = 0; i < 20; ++i) {
            write(QStringLiteral("f/small %1").arg(i), QByteArray(1000, 'x'));
            write(QStringLiteral("f/sub/larger %1").arg(i), QByteArray(2 * Block, 'x'));
        }
        const PaintedBox painted;
        copyBuiltIn(left("f"));
        const QStringList shown = shownTexts();
        QCOMPARE(shown.size(), 20 * 2 + 20 * 4);
        QCOMPARE(painted.texts(), withoutRepetitions(shown));
        QCOMPARE(painted.texts().filter("Completed: 0% (0 b/").size(), 40);
        QCOMPARE(painted.texts().filter("Completed: 100% (1 Mb/1 Mb)").size(), 20);
    }

    void everyPictureIsThatOfItsText()
    {
        writeFast("a", 100 * Block);
        const PaintedBox painted;
        QVERIFY(window_->CopyFile(left("a"), right("a")));
        QStringList looked;
        for (const PaintedBox::Picture& picture : painted.pictures()) {
            if (picture.image.isNull())
                continue; // painted again before events ran
            kWidget expected;
            expected.showText(LANG_COPYING, picture.text, 4, "res/img/copy.png", kWidget::Plain);
            QVERIFY2(picture.image == pictureOf(expected), qPrintable(completed(picture.text)));
            looked.append(picture.text);
        }
        QCOMPARE(withoutRepetitions(looked), painted.texts());
    }

private:
    /// A file whose blocks take hardly any time to copy.
    void writeFast(const QString& name, qint64 size)
    {
        files().writeSparse("left/" + name, size);
        files().makeLink("right/" + name, "/dev/null");
    }

    /// The texts that the box was given.
    QStringList shownTexts()
    {
        QStringList texts;
        for (const QString& line : taken().filter("Completed: "))
            texts.append(line.section(" | ", 2, 2));
        return texts;
    }

    static QStringList withoutRepetitions(QStringList texts)
    {
        texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
        return texts;
    }
};

QUARN_TEST_MAIN(tst_CopyPictures)
#include "tst_copypictures.moc"
