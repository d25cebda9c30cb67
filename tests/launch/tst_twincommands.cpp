#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/twinfixture.h"
#include "tests/launch/shareservice.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

// Commands that look at an entry with an odd name, hand it on or remember it.

namespace
{

using Fixture = CommandFixture;
using PhoneKey::Code;

constexpr int OddSize = 500; // bytes; twins are shorter

/// Whether a name breaks a line of the bookmarks' file, and is kept out of it.
bool hasBreak(const QByteArray& name)
{
    return name.contains('\n') || name.contains('\r');
}

/// A path as command lines have it: what the shell reads between double quotes is kept from it in a
/// path that is no text, and left to it in one that is.
QByteArray quoted(QByteArray path)
{
    if (!QByteArrayView(path).isValidUtf8())
        for (const char* sign : {"\\", "\"", "$", "`"})
            path.replace(sign, QByteArray("\\") + sign);
    return '"' + path + '"';
}

} // namespace

class tst_TwinCommands : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        twins_.reset();
        full_inf = false;
    }

    void pluginsGetTheBytes_data() { addOddKinds(); }
    void pluginsGetTheBytes()
    {
        make(TwinFixture::Files, ".pic");
        work().write("fm_plugins.cfg", "07 0 Viewer\n");
        work().write("mime_types.cfg", "001 07 PIC\n");
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                pick(name);
                finishBusyBox();
            },
            [this](const QByteArray& name) {
                const QByteArray path = quoted(twins_->left(name)) + '&';
                expectCommands({folder() + "plugins/Viewer/Viewer -d " + path, "Viewer " + path});
            });
        twins_->verify();
    }

    void chosenPluginGetsTheBytes_data() { addOddKinds(); }
    void chosenPluginGetsTheBytes()
    {
        make(TwinFixture::Files);
        work().write("fm_plugins.cfg", "07 1 /bin/view\n");
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                twins_->highlight(twins_->left(), name);
                holdKey(Code::Modifier);
                pressKey('1');
                releaseKey(Code::Modifier);
                finishBusyBox();
            },
            [this](const QByteArray& name) {
                expectCommands({"/bin/view " + quoted(twins_->left(name)) + '&'});
            });
        twins_->verify();
    }

    void playerGetsTheBytes_data() { addOddKinds(); }
    void playerGetsTheBytes()
    {
        make(TwinFixture::Files);
        installPlayer();
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                twins_->highlight(twins_->left(), name);
                pressKey(Code::Music);
            },
            [this](const QByteArray& name) {
                expectCommands({folder() + "plugins/LyraPlayer/LyraPlayer -d " +
                                quoted(twins_->left(name)) + '&'});
            });
        twins_->verify();
    }

    void playlistHoldsTheBytes_data() { addOddKinds(); }
    void playlistHoldsTheBytes()
    {
        make(TwinFixture::Files, ".mp3");
        twins_->leaveOutWhatTheShellChanges();
        installPlayer();
        twins_->start();
        const QList<QByteArray> rows = rowsOf(twins_->left());
        QByteArray expected;
        bool allAdded = true;
        pressKey('0');
        for (const QByteArray& name : rows) {
            if (!twins_->names().contains(name))
                continue;
            twins_->program().panel(1)->setCurrentItem(int(rows.indexOf(name)));
            pressKey(Code::Return);
            // The shell's echo would change it, so it is kept out.
            const bool added = QByteArrayView(name).isValidUtf8() || !name.contains('\\');
            if (added)
                expected += twins_->left(name) + '\n';
            allAdded = allAdded && added;
        }
        const DebugLines lines;
        pressKey(Code::Music);
        QCOMPARE(readFile(folder() + "plugins/LyraPlayer/TempList.m3u"), expected + '\n');
        // What was left out is named for who looks after the program.
        QCOMPARE(lines.mentions("playlist: left out: "), !allAdded);
    }

    void songsInAnOddFolderArePlayed_data() { addOddKinds(); }
    void songsInAnOddFolderArePlayed()
    {
        make(TwinFixture::Folders, ".mp3");
        twins_->leaveOutWhatTheShellChanges();
        installPlayer();
        twins_->start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                twins_->highlight(twins_->left(), name);
                pressKey(Code::Music);
                finishBusyBox();
            },
            [this](const QByteArray& name) {
                // The list is sorted line by line.
                if (name.contains('\n'))
                    return;
                const QByteArray list = readFile(folder() + "plugins/LyraPlayer/TempList.m3u");
                const QByteArray song = twins_->left(name) + '/' + name + '\n';
                twins_->expect(list.contains(song), "the song is not in the list");
                twins_->expect(list.contains(twins_->left(name) + "/folder/" + name + '\n'),
                               "the song in the folder is not in the list");
            });
        twins_->verify();
    }

    void propertiesAreThoseOfTheEntry_data() { addOddKinds(); }
    void propertiesAreThoseOfTheEntry()
    {
        make(TwinFixture::Files);
        start();
        twins_->lookAtEach([this](const QByteArray& name) { showProperties(name); },
                           [this](const QByteArray& name) {
                               expectLine(LANG_TYPE, LANG_FILE);
                               expectLine(LANG_SIZE, QString::number(sizeOf(name)) + " b");
                           },
                           [this](const QByteArray& name) {
                               writeFile(twins_->left(name), QByteArray(sizeOf(name), 'x'));
                           });
        twins_->verify();
    }

    void propertiesOfAFolderCountWhatIsInIt_data() { addOddKinds(); }
    void propertiesOfAFolderCountWhatIsInIt()
    {
        make(TwinFixture::Folders);
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) { showProperties(name); },
            [this](const QByteArray& name) {
                expectLine(LANG_TYPE, LANG_FOLDER);
                expectLine(LANG_DIRS,
                           QStringLiteral("1 | %1: %2").arg(LANG_FILES).arg(visibleFilesIn(name)));
            });
        twins_->verify();
    }

    void propertiesOfALinkAreItsOwn_data() { addOddKinds(); }
    void propertiesOfALinkAreItsOwn()
    {
        make(TwinFixture::Links);
        start();
        twins_->lookAtEach([this](const QByteArray& name) { showProperties(name); },
                           [this](const QByteArray& name) {
                               expectLine(LANG_TYPE, LANG_SYMLINK);
                               const auto bytes = twins_->contentBehind(name).size();
                               expectLine(LANG_SIZE, QString::number(bytes) + " b");
                           });
        twins_->verify();
    }

    void bookmarkLeadsBackToTheFolder_data() { addOddKinds(); }
    void bookmarkLeadsBackToTheFolder()
    {
        make(TwinFixture::Folders);
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                pick(name);
                twins_->program().log().expect({typing("mark")});
                chooseFromTheEnd(1);
                pressKey(Code::FolderUp);
                chooseFromTheEnd(2);
                expectListed(twins_->left(name));
                pressKey(Code::FolderUp);
                expectListed(twins_->left());
            },
            [this](const QByteArray& name) {
                const bool written = readFile(folder() + "bookmark.cfg").endsWith(bookmarkOf(name));
                twins_->expect(written != hasBreak(name), "the record is another");
            });
        twins_->verify();
    }

    void bookmarkOfAnEarlierRunLeadsToTheFolder_data() { addOddKinds(); }
    void bookmarkOfAnEarlierRunLeadsToTheFolder()
    {
        make(TwinFixture::Folders);
        QByteArray records;
        QList<QByteArray> marked;
        for (const QByteArray& name : twins_->names()) {
            if (hasBreak(name))
                continue;
            records += bookmarkOf(name);
            marked.append(name);
        }
        work().write("bookmark.cfg", records);
        start();
        twins_->lookAtEach(
            [this, &marked](const QByteArray& name) {
                if (!marked.contains(name))
                    return;
                // The menu is long: the item is chosen in the way that its key would.
                const auto place = int(marked.indexOf(name));
                twins_->program().panel(1)->setDir(quarn->bookmarkPaths.value(place), 0);
                expectListed(twins_->left(name));
                pressKey(Code::FolderUp);
            },
            [](const QByteArray&) {});
        twins_->verify();
    }

    void folderIsEnteredAndLeft_data() { addOddKinds(); }
    void folderIsEnteredAndLeft()
    {
        make(TwinFixture::Folders);
        start();
        twins_->lookAtEach(
            [this](const QByteArray& name) {
                pick(name);
                expectListed(twins_->left(name));
                twins_->highlight(twins_->left(name), "folder");
                pressKey(Code::Return);
                expectListed(twins_->left(name) + "/folder");
                // Up by the key, then by the row.
                pressKey(Code::FolderUp);
                expectListed(twins_->left(name));
                twins_->highlight(twins_->left(name), "..");
                pressKey(Code::Return);
                expectListed(twins_->left());
            },
            [](const QByteArray&) {});
        twins_->verify();
    }

    void fileIsSharedUnderItsBytesOrNotAtAll_data() { addOddKinds(); }
    void fileIsSharedUnderItsBytesOrNotAtAll()
    {
        make(TwinFixture::Files);
        start();
        ShareService service;
        twins_->lookAtEach(
            [this, &service](const QByteArray& name) {
                service.requests.clear();
                twins_->highlight(twins_->left(), name);
                Fixture::choose(Fixture::SendByBluetooth);
            },
            [this, &service](const QByteArray& name) {
                if (service.requests.isEmpty())
                    twins_->expect(twins_->noted("message") == 1, "nothing is shared or said");
                else
                    twins_->expect(bytesOf(service.requests.first().path) == twins_->left(name),
                                   "another file is shared");
            });
        twins_->verify();
    }

    void thumbnailIsOfTheEntrysPicture_data() { addOddKinds(); }
    void thumbnailIsOfTheEntrysPicture()
    {
        make(TwinFixture::Files, ".png");
        const QByteArray red = plainPng(4, 4, Qt::red);
        const QByteArray blue = plainPng(4, 4, Qt::blue);
        const QList<QByteArray> rows = rowsOf(twins_->left());
        for (const QByteArray& name : rows.mid(1))
            writeFile(twins_->left(name), twins_->names().contains(name) ? red : blue);
        work().write("mime_types.cfg", "002 00 PNG\n");
        full_inf = true;
        start();
        FileBrowserFtab* panel = twins_->program().panel(1);
        panel->setDir(panel->curPath, 0);
        for (int i = 0; i < rows.size(); ++i)
            panel->LoadPreview();
        QCOMPARE(panel->count(), int(rows.size()));
        for (int row = 1; row < rows.size(); ++row) {
            const QImage picture = panel->item(row)->pixmap(0).toImage();
            const QColor expected = twins_->names().contains(rows.at(row)) ? Qt::red : Qt::blue;
            QVERIFY2(picture.size() == QSize(4, 4) && picture.pixelColor(1, 1) == expected,
                     qPrintable(shown(rows.at(row))));
        }
    }

private:
    const ScratchFolder& work() const { return twins_->program().program().workFolder(); }
    static QByteArray folder() { return work_folder.toLocal8Bit() + '/'; }

    void make(TwinFixture::Form form, const QByteArray& end = QByteArray())
    {
        QFETCH(int, kind);
        twins_ = std::make_unique<TwinFixture>(namesForEach(kind), form, false, end);
    }

    /// Starts the program; from then on command lines are noted and nothing is run.
    void start()
    {
        twins_->start();
        twins_->program().log().setShell([this](const QByteArray& command) {
            commands_.append(command);
            return 0;
        });
        commands_.clear();
    }

    void pick(const QByteArray& name)
    {
        twins_->highlight(twins_->left(), name);
        pressKey(Code::Return);
    }

    /// A record of the bookmarks' file.
    QByteArray bookmarkOf(const QByteArray& name) const { return "\nmark\n" + twins_->left(name); }

    void installPlayer() const
    {
        work().write("plugins/LyraPlayer/LyraPlayer", "#!/bin/sh\n");
        work().setMode("plugins/LyraPlayer/LyraPlayer", 0755);
    }

    static void finishBusyBox()
    {
        while (processView->isUp())
            processView->aniUpdate();
    }

    void expectCommands(const QByteArrayList& expected)
    {
        const QByteArrayList given = std::exchange(commands_, {});
        twins_->expect(given == expected, "another command");
        twins_->expect(twins_->noted("message") == 0, "a message");
    }

    int sizeOf(const QByteArray& name) const
    {
        return OddSize + int(twins_->names().indexOf(name));
    }

    void showProperties(const QByteArray& name)
    {
        twins_->highlight(twins_->left(), name);
        Fixture::choose(Fixture::Properties);
    }

    void expectLine(const QString& label, const QString& value)
    {
        const bool told =
            textView->isUp() && textView->shownText().contains(' ' + label + ": " + value);
        if (!told)
            twins_->fail(label + " is not " + value + ": " + textView->shownText().left(300));
    }

    int visibleFilesIn(const QByteArray& name) const
    {
        int files = 0;
        for (const QByteArray& each : namesIn(twins_->left(name)))
            files += each.startsWith('.') ? 0 : 1;
        // One of these is a folder, which holds one more.
        return files - (name.startsWith('.') ? 1 : 0);
    }

    /// The panel shows the rows of a folder.
    void expectListed(const QByteArray& path)
    {
        QStringList expected;
        for (const QByteArray& name : rowsOf(path))
            expected += textOf(name);
        twins_->expect(twins_->program().program().rows(1) == expected, "another folder is listed");
    }

    /// Chooses an item of the bookmark menu, counted from its end.
    static void chooseFromTheEnd(int place)
    {
        Fixture::choose(Fixture::Bookmarks);
        for (int i = 0; i < place; ++i)
            pressKey(Code::Up);
        pressKey(Code::Return);
    }

    std::unique_ptr<TwinFixture> twins_;
    QByteArrayList commands_;
};

QUARN_TEST_MAIN(tst_TwinCommands)
#include "tst_twincommands.moc"
