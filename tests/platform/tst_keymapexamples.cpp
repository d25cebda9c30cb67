#include "platform/keyline.h"
#include "platform/keymap.h"
#include "tests/support/debuglines.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>
#include <QSet>

/// The files of keys that are given as examples.
class tst_KeyMapExamples : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(files().size() >= 4); }

    void everyLineIsUnderstood_data() { addFiles(); }
    void everyLineIsUnderstood()
    {
        QFETCH(QString, path);
        const DebugLines complaints;
        KeyMap map;
        map.load(path);
        QCOMPARE(complaints.all(), QStringList());
    }

    void linesGiveOtherKeysThanTheyHave_data() { addFiles(); }
    void linesGiveOtherKeysThanTheyHave()
    {
        QFETCH(QString, path);
        const QSet<int> codes{
            PhoneKey::Return, PhoneKey::PageUp,        PhoneKey::PageDown,  PhoneKey::Modifier,
            PhoneKey::Hide,   PhoneKey::FolderUp,      PhoneKey::SoftLeft,  PhoneKey::SoftRight,
            PhoneKey::Music,  PhoneKey::MusicPrevious, PhoneKey::MusicNext, int('*'),
            int('#')};
        QSet<int> keys;
        QSet<int> given;
        for (const KeyLine& line : linesOf(path)) {
            if (line.kind != KeyLine::Key)
                continue;
            QVERIFY2(!keys.contains(line.number), qPrintable(QString::number(line.number, 16)));
            QVERIFY2(codes.contains(line.code), qPrintable(QString::number(line.code, 16)));
            keys.insert(line.number);
            given.insert(line.code);
        }
        for (const int needed : {PhoneKey::SoftLeft, PhoneKey::SoftRight, PhoneKey::FolderUp})
            QVERIFY(given.contains(needed));
    }

    void eachSaysWhetherThereIsAKeypad_data() { addFiles(); }
    void eachSaysWhetherThereIsAKeypad()
    {
        QFETCH(QString, path);
        int times = 0;
        for (const KeyLine& line : linesOf(path))
            times += line.kind == KeyLine::Keypad ? 1 : 0;
        QCOMPARE(times, 1);
    }

private:
    static QStringList files()
    {
        return QDir(QStringLiteral(QUARN_KEYMAPS)).entryList({"*.cfg"}, QDir::Files);
    }

    static void addFiles()
    {
        QTest::addColumn<QString>("path");
        for (const QString& file : files())
            QTest::newRow(qPrintable(file)) << QStringLiteral(QUARN_KEYMAPS "/") + file;
    }

    static QList<KeyLine> linesOf(const QString& path)
    {
        QFile file(path);
        QList<KeyLine> lines;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : file.readAll().split('\n'))
                lines.append(KeyLine::of(QString::fromUtf8(line)));
        }
        return lines;
    }
};

QUARN_TEST_MAIN(tst_KeyMapExamples)
#include "tst_keymapexamples.moc"
