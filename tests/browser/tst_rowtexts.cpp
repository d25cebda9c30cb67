#include "browser/filebrowserftab.h"
#include "files/entrytexts.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <ctime>
#include <limits>
#include <sys/stat.h>

namespace
{

/// The time zone of the process while it lives.
class TimeZone
{
public:
    explicit TimeZone(const QByteArray& name) : before_(qgetenv("TZ"))
    {
        qputenv("TZ", name);
        tzset();
    }

    ~TimeZone()
    {
        if (before_.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", before_);
        tzset();
    }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    QByteArray before_;
};

QString modelDate(const QFileInfo& info)
{
    const QDate date = info.lastModified().date();
    return QString::asprintf("%02d/%02d/%04d", date.day(), date.month(), date.year());
}

QString modelSize(qint64 size)
{
    // In hundredths of a unit, with integers alone.
    const qint64 bytes = size % (qint64(1) << 32);
    const auto hundredths = [](qint64 value) {
        return QString::number(double(value) / 100, 'g', 6);
    };
    if (bytes < 1024)
        return QStringLiteral("%1 b").arg(bytes);
    if (bytes < 1024 * 1024)
        return hundredths(bytes * 100 / 1024) + QStringLiteral(" Kb");
    return hundredths(bytes * 100 / (1024 * 1024)) + QStringLiteral(" Mb");
}

struct ModelRow {
    QString name;
    QString icon;
    QString detail;

    bool operator==(const ModelRow&) const = default;
};

ModelRow modelRow(const QString& folder, const QString& name, bool fullInfo)
{
    const QFileInfo info(folder + QLatin1Char('/') + name);
    const char* kind = "device";
    if (info.isDir())
        kind = info.isSymLink() ? "folder_link" : "folder";
    else if (info.isFile())
        kind = info.isSymLink() ? "file_link" : "file";
    ModelRow row{
        name, QStringLiteral("browser/%1/%2.png").arg(int(fullInfo)).arg(QLatin1String(kind)), {}};
    if (info.isFile() && !info.isSymLink() && info.suffix().toUpper() == QLatin1String("MP3") &&
        name.contains(QLatin1Char('.')))
        row.icon = QStringLiteral("mime/%1/3.png").arg(int(fullInfo));
    if (fullInfo && info.exists()) {
        row.detail = modelDate(info);
        if (info.isFile())
            row.detail.prepend(modelSize(info.size()) + QStringLiteral("\t\t\t"));
    }
    return row;
}

/// The rows that a folder's list must have, by the toolkit's own means.
QList<ModelRow> modelRows(const QString& path, bool fullInfo)
{
    const auto all = QDir(path).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    const auto isFolder = [&path](const QString& name) {
        return QFileInfo(path + QLatin1Char('/') + name).isDir();
    };
    QStringList names = all;
    std::sort(names.begin(), names.end(), [&isFolder](const QString& left, const QString& right) {
        if (isFolder(left) != isFolder(right))
            return isFolder(left);
        return left.toUcs4() < right.toUcs4();
    });
    QList<ModelRow> rows = {{QStringLiteral(".."), QStringLiteral("back.png"), {}}};
    for (const QString& name : names)
        rows.append(modelRow(path, name, fullInfo));
    return rows;
}

QList<ModelRow> shownRows(const PanelFixture& panel)
{
    QList<ModelRow> rows;
    for (const QString& name : panel.names())
        rows.append({name, panel.icon(name), panel.detail(name)});
    return rows;
}

void fillAtRandom(const ScratchFolder& files, const QString& folder, QRandomGenerator& random)
{
    static const QStringList pieces = {
        QStringLiteral("a"),      QStringLiteral("B"),          QStringLiteral(".mp3"),
        QStringLiteral(".MP3"),   QStringLiteral("_"),          QStringLiteral("\u00e9"),
        QStringLiteral("\uff5e"), QStringLiteral("\U0001f600"), QStringLiteral("%1")};
    static const QStringList targets = {QStringLiteral("/"), QStringLiteral("/dev/null"),
                                        QStringLiteral("nowhere"), QStringLiteral("a"),
                                        QStringLiteral("..")};
    files.makeFolder(folder);
    for (int left = random.bounded(0, 9); left > 0; --left) {
        QString name = folder + QLatin1Char('/');
        for (int i = random.bounded(1, 4); i > 0; --i)
            name += pieces.at(random.bounded(int(pieces.size())));
        if (files.exists(name))
            continue;
        const int kind = random.bounded(5);
        if (kind == 0)
            files.makeFolder(name);
        else if (kind == 1)
            files.makeFifo(name);
        else if (kind == 2)
            files.makeLink(name, targets.at(random.bounded(int(targets.size()))));
        else
            files.writeSparse(name, qint64(1) << random.bounded(0, 34));
        if (kind != 2)
            files.setModified(name, qint64(random.bounded(4000000000.0)) - 1000000000);
    }
}

} // namespace

class tst_RowTexts : public QObject
{
    Q_OBJECT

private slots:
    void fileHasSizeAndDate_data();
    void fileHasSizeAndDate();
    void onlyFilesHaveASize_data();
    void onlyFilesHaveASize();
    void whatLeadsNowhereHasNoText();
    void dateIsLocal_data();
    void dateIsLocal();
    void dateChangesAtMidnightInEveryZone_data();
    void dateChangesAtMidnightInEveryZone();
    void farTimesDoNoHarm_data();
    void farTimesDoNoHarm();
    void timesBeyondTheCalendarHaveNoDate();
    void dateIsOfTheStamp();
    void randomFoldersMatchTheModel();
};

void tst_RowTexts::fileHasSizeAndDate_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << qint64(0) << QStringLiteral("0 b");
    QTest::newRow("bytes") << qint64(1023) << QStringLiteral("1023 b");
    QTest::newRow("a kilobyte") << qint64(1024) << QStringLiteral("1 Kb");
    QTest::newRow("one and a half") << qint64(1536) << QStringLiteral("1.5 Kb");
    QTest::newRow("below a megabyte") << qint64(1048575) << QStringLiteral("1023.99 Kb");
    QTest::newRow("a megabyte") << qint64(1048576) << QStringLiteral("1 Mb");
    QTest::newRow("some") << qint64(5000000) << QStringLiteral("4.76 Mb");
    QTest::newRow("3 GiB") << (qint64(3) << 30) << QStringLiteral("3072 Mb");
    QTest::newRow("one below 4 GiB") << (qint64(4) << 30) - 1 << QStringLiteral("4095.99 Mb");
    QTest::newRow("4 GiB") << (qint64(4) << 30) << QStringLiteral("0 b");
    QTest::newRow("5 GiB") << (qint64(5) << 30) << QStringLiteral("1024 Mb");
}

void tst_RowTexts::fileHasSizeAndDate()
{
    const TimeZone zone("UTC");
    const PanelFixture panel(true);
    QFETCH(qint64, size);
    QFETCH(QString, text);
    panel.files().writeSparse(QStringLiteral("file"), size);
    panel.files().setModified(QStringLiteral("file"), 1204675200);
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.detail(QStringLiteral("file")), text + QStringLiteral("\t\t\t05/03/2008"));
}

void tst_RowTexts::onlyFilesHaveASize_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("folder") << QStringLiteral("folder") << QStringLiteral("25/12/2008");
    QTest::newRow("link to a folder")
        << QStringLiteral("to-folder") << QStringLiteral("25/12/2008");
    QTest::newRow("file") << QStringLiteral("file") << QStringLiteral("3 b\t\t\t01/03/2008");
    QTest::newRow("link to a file")
        << QStringLiteral("to-file") << QStringLiteral("3 b\t\t\t01/03/2008");
    QTest::newRow("FIFO") << QStringLiteral("fifo") << QStringLiteral("01/01/1970");
    QTest::newRow("link to a FIFO") << QStringLiteral("to-fifo") << QStringLiteral("01/01/1970");
    QTest::newRow("back entry") << QStringLiteral("..") << QString();
}

void tst_RowTexts::onlyFilesHaveASize()
{
    const TimeZone zone("UTC");
    const PanelFixture panel(true);
    const ScratchFolder& files = panel.files();
    files.makeFolder(QStringLiteral("folder"));
    files.setModified(QStringLiteral("folder"), 1230163200);
    files.write(QStringLiteral("file"), "abc");
    files.setModified(QStringLiteral("file"), 1204329600);
    files.makeFifo(QStringLiteral("fifo"));
    files.setModified(QStringLiteral("fifo"), 0);
    for (const char* target : {"folder", "file", "fifo"})
        files.makeLink(QStringLiteral("to-") + QLatin1String(target), QLatin1String(target));
    panel->setDir(files.path(), 0);
    QFETCH(QString, name);
    QTEST(panel.detail(name), "text");
}

void tst_RowTexts::whatLeadsNowhereHasNoText()
{
    const PanelFixture panel(true);
    panel.files().makeLink(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    panel.files().makeLink(QStringLiteral("loop"), QStringLiteral("loop"));
    panel->setDir(panel.files().path(), 0);
    QVERIFY(panel.detail(QStringLiteral("dangling")).isNull());
    QVERIFY(panel.detail(QStringLiteral("loop")).isNull());
}

void tst_RowTexts::dateIsLocal_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<qint64>("modified");
    QTest::addColumn<QString>("date");
    QTest::newRow("first second") << QByteArray("UTC") << qint64(0) << QStringLiteral("01/01/1970");
    QTest::newRow("a second before it")
        << QByteArray("UTC") << qint64(-1) << QStringLiteral("31/12/1969");
    QTest::newRow("1902") << QByteArray("UTC") << qint64(-2145916800)
                          << QStringLiteral("01/01/1902");
    QTest::newRow("after 2038") << QByteArray("UTC") << qint64(4102444800)
                                << QStringLiteral("01/01/2100");
    QTest::newRow("leap day") << QByteArray("UTC") << qint64(951782400)
                              << QStringLiteral("29/02/2000");
    QTest::newRow("west of noon") << QByteArray("WST12") << qint64(1204675200)
                                  << QStringLiteral("04/03/2008");
    QTest::newRow("east of noon") << QByteArray("EST-14") << qint64(1204675199)
                                  << QStringLiteral("05/03/2008");
    QTest::newRow("midnight") << QByteArray("NPT-5:45") << qint64(1204654500)
                              << QStringLiteral("05/03/2008");
    QTest::newRow("before midnight")
        << QByteArray("NPT-5:45") << qint64(1204654499) << QStringLiteral("04/03/2008");
}

void tst_RowTexts::dateIsLocal()
{
    QFETCH(QByteArray, zone);
    QFETCH(qint64, modified);
    const TimeZone local(zone);
    const PanelFixture panel(true);
    panel.files().makeFolder(QStringLiteral("folder"));
    panel.files().setModified(QStringLiteral("folder"), modified);
    panel->setDir(panel.files().path(), 0);
    QTEST(panel.detail(QStringLiteral("folder")), "date");
}

void tst_RowTexts::dateChangesAtMidnightInEveryZone_data()
{
    QTest::addColumn<QByteArray>("zone");
    // Seconds from midnight there to midnight in Greenwich.
    QTest::addColumn<int>("behind");
    QTest::newRow("Greenwich") << QByteArray("UTC") << 0;
    QTest::newRow("hours") << QByteArray("XXX5") << 5 * 3600;
    QTest::newRow("quarters") << QByteArray("QTR-5:45") << -(5 * 3600 + 45 * 60);
    QTest::newRow("minutes") << QByteArray("XXX0:07") << 7 * 60;
    QTest::newRow("seconds") << QByteArray("XXX0:44:30") << 44 * 60 + 30;
}

void tst_RowTexts::dateChangesAtMidnightInEveryZone()
{
    QFETCH(QByteArray, zone);
    QFETCH(int, behind);
    const TimeZone local(zone);
    const PanelFixture panel(true);
    const qint64 midnight = 1204675200 + behind;
    for (int i = 0; i < 6; ++i) {
        const QString name = QString::number(i);
        panel.files().makeFolder(name);
        panel.files().setModified(name, midnight + (i % 2 == 0 ? -1 - i : i));
    }
    panel->setDir(panel.files().path(), 0);
    for (int i = 0; i < 6; ++i) {
        const QString day = i % 2 == 0 ? QStringLiteral("04") : QStringLiteral("05");
        QCOMPARE(panel.detail(QString::number(i)), day + QStringLiteral("/03/2008"));
    }
}

void tst_RowTexts::farTimesDoNoHarm_data()
{
    QTest::addColumn<qint64>("modified");
    QTest::newRow("1901") << qint64(-2147483648LL);
    QTest::newRow("before 1901") << qint64(-4000000000LL);
    QTest::newRow("2446") << qint64(15032385535LL);
    QTest::newRow("year 5138") << qint64(99999999999LL);
    QTest::newRow("as far as it goes") << std::numeric_limits<qint64>::max();
    QTest::newRow("as long ago as it goes") << std::numeric_limits<qint64>::min();
}

void tst_RowTexts::farTimesDoNoHarm()
{
    const TimeZone zone("UTC");
    const PanelFixture panel(true);
    panel.files().makeFolder(QStringLiteral("folder"));
    QFETCH(qint64, modified);
    panel.files().setModified(QStringLiteral("folder"), modified);
    // File systems store the nearest time that they can.
    struct stat info = {};
    QCOMPARE(
        stat(QFile::encodeName(panel.files().path(QStringLiteral("folder"))).constData(), &info),
        0);
    std::tm day{};
    QVERIFY(gmtime_r(&info.st_mtim.tv_sec, &day) != nullptr);
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.detail(QStringLiteral("folder")),
             QString::asprintf("%02d/%02d/%d", day.tm_mday, day.tm_mon + 1, day.tm_year + 1900));
}

void tst_RowTexts::timesBeyondTheCalendarHaveNoDate()
{
    QCOMPARE(dateText(std::numeric_limits<qint64>::max()), QString());
    QCOMPARE(dateText(std::numeric_limits<qint64>::min()), QString());
    // The last year that the C library can tell.
    QCOMPARE(dateText(qint64(67768036191600000)), QString());
}

void tst_RowTexts::dateIsOfTheStamp()
{
    const auto date = [](int year, int month, int day) {
        return FileBrowserFtab::fDate(QDateTime(QDate(year, month, day), QTime(23, 59)));
    };
    QCOMPARE(date(2008, 3, 5), QStringLiteral("05/03/2008"));
    QCOMPARE(date(2008, 3, 1), QStringLiteral("01/03/2008"));
    QCOMPARE(date(2008, 12, 25), QStringLiteral("25/12/2008"));
    QCOMPARE(date(1999, 10, 9), QStringLiteral("09/10/1999"));
    QCOMPARE(date(1999, 9, 10), QStringLiteral("10/09/1999"));
}

void tst_RowTexts::randomFoldersMatchTheModel()
{
    const TimeZone zone("NPT-5:45");
    QRandomGenerator random(20080305);
    const PanelFixture full(true);
    full.associate(QStringLiteral("MP3"), 3);
    for (int round = 0; round < 200; ++round) {
        const QString folder = QString::number(round);
        fillAtRandom(full.files(), folder, random);
        const QString path = full.files().path(folder);
        full->setDir(path, 0);
        QCOMPARE(shownRows(full), modelRows(path, true));
        full->setFullInf();
        full->setDir(path, 0);
        QCOMPARE(shownRows(full), modelRows(path, false));
        full->setFullInf();
    }
}

QUARN_TEST_MAIN(tst_RowTexts)
#include "tst_rowtexts.moc"
