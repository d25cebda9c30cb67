#include "plugins/lyraplayer/trackreader.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/lyraplayer/taggedfiles.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QColor>
#include <QFile>

/// What is read of music in the background.
class tst_TrackReader : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void titlesComeInTheOrderInWhichTheyAreAskedFor();
    void aCoverComesBeforeTitlesThatWait();
    void onlyTheLastCoverComes();

private:
    void askTitles(TrackReader& reader, int count) const;

    std::unique_ptr<ScratchFolder> folder_;
    QByteArray red_; ///< files with a title and a cover of this colour
    QByteArray blue_;
};

void tst_TrackReader::init()
{
    folder_ = std::make_unique<ScratchFolder>();
    const auto write = [this](const QString& name, const QColor& colour) {
        folder_->write(name, mp3With(id3Text("TIT2", "title") +
                                     id3Picture(pictureFile({20, 20}, "png", colour))));
        return QFile::encodeName(folder_->path(name));
    };
    red_ = write("red.mp3", Qt::red);
    blue_ = write("blue.mp3", Qt::blue);
}

void tst_TrackReader::askTitles(TrackReader& reader, int count) const
{
    for (int number = 0; number < count; ++number)
        reader.askTitle(number, red_);
}

void tst_TrackReader::titlesComeInTheOrderInWhichTheyAreAskedFor()
{
    constexpr int Titles = 50;
    TrackReader reader(nullptr);
    QList<int> numbers;
    connect(&reader, &TrackReader::titleRead, &reader, [&](int number, const QString& title) {
        QCOMPARE(title, QString("title"));
        numbers.append(number);
    });
    askTitles(reader, Titles);
    QTRY_COMPARE(numbers.size(), Titles);
    for (int number = 0; number < Titles; ++number)
        QCOMPARE(numbers.at(number), number);
}

void tst_TrackReader::aCoverComesBeforeTitlesThatWait()
{
    constexpr int Titles = 500;
    // Of a thread that is slow all titles may be read before it asks for the cover.
    const auto isBefore = [this] {
        TrackReader reader(nullptr);
        int titles = 0;
        int titlesBefore = -1;
        connect(&reader, &TrackReader::titleRead, &reader, [&] { ++titles; });
        connect(&reader, &TrackReader::coverRead, &reader, [&] { titlesBefore = titles; });
        askTitles(reader, Titles);
        reader.askCover(red_, {20, 20});
        [&] { QTRY_VERIFY(titlesBefore >= 0); }();
        return titlesBefore >= 0 && titlesBefore < Titles;
    };
    QTRY_VERIFY(isBefore());
}

void tst_TrackReader::onlyTheLastCoverComes()
{
    TrackReader reader(nullptr);
    QList<QColor> covers;
    connect(&reader, &TrackReader::coverRead, &reader,
            [&](const QImage& cover) { covers.append(cover.pixelColor(0, 0)); });
    reader.askCover(red_, {20, 20});
    reader.askCover(blue_, {20, 20});
    QTRY_COMPARE(covers, QList<QColor>{Qt::blue});
}

QUARN_TEST_MAIN(tst_TrackReader)
#include "tst_trackreader.moc"
