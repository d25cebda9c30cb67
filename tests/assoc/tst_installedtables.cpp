#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "tests/support/testmain.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

/// The tables that are installed.
class tst_InstalledTables : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void linesKeepToTheirColumns_data();
    void linesKeepToTheirColumns();
    void noExtensionIsListedTwice();
    void everyExtensionHasAPlugin();
    void everyIconNumberHasItsPictures_data();
    void everyIconNumberHasItsPictures();
    void noPluginIsListedTwice();
    void everyPluginIsUsed();
    void pluginsOfTheFolderAreInstalled();
    void programsGivenByPathHaveLabelAndIcon();
    void picturesAreTheTypesThatThePanelPreviews();

private:
    static QString staged(const QString& name);
    static QStringList lines(const QString& name);
};

QString tst_InstalledTables::staged(const QString& name)
{
    return QStringLiteral(QUARN_STAGE_DIR "/") + name;
}

QStringList tst_InstalledTables::lines(const QString& name)
{
    QFile file(QStringLiteral(QUARN_DATA_DIR "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList result = QString::fromUtf8(file.readAll()).split('\n');
    return result.takeLast().isEmpty() ? result : QStringList();
}

void tst_InstalledTables::initTestCase()
{
    loadMimes(QStringLiteral(QUARN_DATA_DIR "/mime_types.cfg"));
    loadPlugins(QStringLiteral(QUARN_DATA_DIR "/fm_plugins.cfg"));
    QVERIFY(mime_nums > 100);
    QVERIFY(plug_nums > 0);
}

void tst_InstalledTables::linesKeepToTheirColumns_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("entries");
    QTest::newRow("mime_types.cfg") << "mime_types.cfg"
                                    << "^\\d{3} \\d{2} [^\\s./a-z]{1,20}$" << mime_nums;
    QTest::newRow("fm_plugins.cfg") << "fm_plugins.cfg"
                                    << "^\\d{2} [01] \\S(.{0,98}\\S)?$" << plug_nums;
}

void tst_InstalledTables::linesKeepToTheirColumns()
{
    QFETCH(QString, file);
    QFETCH(QString, pattern);
    const QRegularExpression columns(pattern);
    for (const QString& line : lines(file))
        QVERIFY2(columns.match(line).hasMatch(), qPrintable(line));
    QTEST(int(lines(file).size()), "entries");
    QVERIFY(QFile::exists(staged(file)));
}

void tst_InstalledTables::noExtensionIsListedTwice()
{
    QSet<QString> seen;
    for (const mime_struct& mime : mimes) {
        QVERIFY2(!seen.contains(mime.ext), qPrintable(mime.ext));
        seen.insert(mime.ext);
    }
}

void tst_InstalledTables::everyExtensionHasAPlugin()
{
    QSet<int> numbers;
    for (const plugin_struct& plugin : plugins)
        numbers.insert(plugin.plugin_num);
    for (const mime_struct& mime : mimes)
        QVERIFY2(numbers.contains(mime.plugin_num), qPrintable(mime.ext));
}

void tst_InstalledTables::everyIconNumberHasItsPictures_data()
{
    QTest::addColumn<int>("number");
    QSet<int> numbers;
    for (const mime_struct& mime : mimes)
        numbers.insert(mime.icon_num);
    for (const int number : numbers)
        QTest::newRow(qPrintable(QString::number(number))) << number;
}

void tst_InstalledTables::everyIconNumberHasItsPictures()
{
    QFETCH(int, number);
    constexpr int Sides[] = {16, 32};
    for (const int set : {0, 1}) {
        for (const int density : {1, 2, 3}) {
            const QString suffix = density == 1 ? QString() : QString("@%1x").arg(density);
            const QString path =
                staged(QString("res/img/mime/%1/%2%3.png").arg(set).arg(number).arg(suffix));
            const QImage picture(path);
            QVERIFY2(!picture.isNull(), qPrintable(path));
            QCOMPARE(picture.height(), Sides[set] * density);
        }
    }
}

void tst_InstalledTables::noPluginIsListedTwice()
{
    QSet<int> numbers;
    QSet<QString> names;
    for (const plugin_struct& plugin : plugins) {
        QVERIFY2(!numbers.contains(plugin.plugin_num), qPrintable(plugin.name));
        QVERIFY2(!names.contains(plugin.name), qPrintable(plugin.name));
        numbers.insert(plugin.plugin_num);
        names.insert(plugin.name);
    }
}

void tst_InstalledTables::everyPluginIsUsed()
{
    for (const plugin_struct& plugin : plugins) {
        QVERIFY2(std::any_of(mimes.begin(), mimes.end(),
                             [&plugin](const mime_struct& mime) {
                                 return mime.plugin_num == plugin.plugin_num;
                             }),
                 qPrintable(plugin.name));
    }
}

void tst_InstalledTables::pluginsOfTheFolderAreInstalled()
{
    for (const plugin_struct& plugin : plugins) {
        if (plugin.kind != 0)
            continue;
        const QString folder = staged("plugins/") + plugin.name + '/';
        QVERIFY2(QFileInfo(folder + plugin.name).isExecutable(), qPrintable(plugin.name));
        QVERIFY2(!QImage(folder + "icon.png").isNull(), qPrintable(plugin.name));
    }
}

void tst_InstalledTables::programsGivenByPathHaveLabelAndIcon()
{
    for (const plugin_struct& plugin : plugins) {
        if (plugin.kind != 1)
            continue;
        const QString label = pluginLabel(staged({}), plugin);
        QVERIFY2(!label.trimmed().isEmpty() && label != "Unknown", qPrintable(plugin.name));
        const QImage icon(fullPathPluginFolder(staged({}), plugin.plugin_num) + "icon.png");
        QVERIFY2(!icon.isNull(), qPrintable(plugin.name));
    }
}

void tst_InstalledTables::picturesAreTheTypesThatThePanelPreviews()
{
    for (const char* extension : {"JPG", "JPEG", "PNG", "GIF", "BMP"}) {
        const auto found = std::find_if(mimes.begin(), mimes.end(), [&](const mime_struct& mime) {
            return mime.ext == QLatin1String(extension);
        });
        QVERIFY2(found != mimes.end(), extension);
        QCOMPARE(found->icon_num, 2);
    }
}

QUARN_TEST_MAIN(tst_InstalledTables)
#include "tst_installedtables.moc"
