#include "assoc/plugintable.h"
#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/znavtabwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"
#include "widgets/menuitems.h"

#include <QFile>
#include <QImage>
#include <QMetaMethod>
#include <QTimer>

namespace
{

/// What one item of a menu is to be.
struct Item {
    int id;
    QString text;
    QString icon; ///< in res/img/
    ZOptionsMenu* submenu;
    bool enabled;
    const char* slot; ///< nullptr: nothing
};

QImage asImage(const QPixmap& pixmap)
{
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

QImage pictureFile(const QString& path)
{
    return asImage(QPixmap(path));
}

/// Which slots of the window an item is connected to. They are not any more afterwards.
QList<QByteArray> takeConnections(FM* window, ZOptionsMenu* menu, int id)
{
    QList<QByteArray> slotsFound;
    const QMetaObject& type = FM::staticMetaObject;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QByteArray slot = type.method(i).methodSignature();
        while (menu->disconnectItem(id, window, slot.constData()))
            slotsFound.append(slot);
    }
    return slotsFound;
}

void checkItem(FM* window, ZOptionsMenu* menu, int position, const Item& item)
{
    QCOMPARE(menu->idAt(position), item.id);
    QCOMPARE(menu->textAt(position), item.text);
    QCOMPARE(asImage(menu->iconAt(position)), pictureFile(work_folder + "res/img/" + item.icon));
    QVERIFY(!menu->iconAt(position).isNull());
    QCOMPARE(menu->submenuAt(position), item.submenu);
    QCOMPARE(menu->isItemEnabled(item.id), item.enabled);
    const QList<QByteArray> expected =
        item.slot != nullptr ? QList<QByteArray>{item.slot} : QList<QByteArray>();
    QCOMPARE(takeConnections(window, menu, item.id), expected);
}

void checkItems(FM* window, ZOptionsMenu* menu, const QList<Item>& items)
{
    QCOMPARE(menu->count(), items.size());
    for (int i = 0; i < items.size(); ++i) {
        checkItem(window, menu, i, items.at(i));
        if (QTest::currentTestFailed())
            return qWarning("item %d", items.at(i).id);
    }
}

/// What stands over the two soft keys.
QString shownInBar()
{
    return quarn->softKey->shownText(ZSoftKey::Left) + '|' +
           quarn->softKey->shownText(ZSoftKey::Right);
}

qsizetype menuCount()
{
    return ZScreen::instance()->findChildren<ZOptionsMenu*>().size();
}

QWidget* top()
{
    return ZScreen::instance()->active();
}

void pressKeys(const QList<int>& codes)
{
    for (const int code : codes)
        pressKey(code);
}

} // namespace

class tst_SoftKeys : public QObject
{
    Q_OBJECT

public slots:
    /// An item's slot in the tests of menus that are rebuilt while they are used.
    void rebuildMenus()
    {
        quarn->createSoftKeysStab();
        ++rebuilt_;
    }

private slots:
    void init()
    {
        program_ = std::make_unique<Program>();
        rebuilt_ = 0;
    }

    void cleanup() { program_.reset(); }

    void leftSoftKeyOpensTheOptionsAndTheRightHasNothing()
    {
        const FM* window = program_->start();
        QCOMPARE(window->softKey->text(ZSoftKey::Left), QStringLiteral("Options"));
        QCOMPARE(window->softKey->optMenu(ZSoftKey::Left), window->optionsMenu);
        QCOMPARE(window->softKey->text(ZSoftKey::Right), QString());
        QCOMPARE(window->softKey->optMenu(ZSoftKey::Right), nullptr);
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(top(), window);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(top(), window->optionsMenu);
    }

    void optionsMenuHasItsItems()
    {
        FM* w = program_->start();
        checkItems(w, w->optionsMenu,
                   {{1, "\t\t\tOpen with..", "open_with.png", w->openWithMenu, true, nullptr},
                    {2, "\t\t\tDelete", "delete.png", nullptr, true, "slot_Delete()"},
                    {3, "\t\t\tCopy menu", "copy.png", w->copyMenu, true, nullptr},
                    {4, "\t\t\tRename", "rename.png", nullptr, true, "slot_Rename()"},
                    {5, "\t\t\tMake Dir", "mkdir.png", nullptr, true, "slot_MkDir()"},
                    {6, "\t\t\tBookmarks", "bookmark.png", w->bookmarkMenu, true, nullptr},
                    {7, "\t\t\tSend by Bluetooth", "bt.png", nullptr, true, "slot_SendBt()"},
                    {8, "\t\t\tProperties", "props.png", nullptr, true, "slot_Properties()"}});
    }

    void optionsMenuEndsWithTheTrashIfThereIsOne()
    {
        extras.trash = true;
        FM* w = program_->start();
        QCOMPARE(w->optionsMenu->count(), 9);
        checkItem(w, w->optionsMenu, 8,
                  {9, "\t\t\tTrash", "trash.png", nullptr, true, "slot_Trash()"});
    }

    void copyMenuHasItsItemsAndCannotPasteYet()
    {
        FM* w = program_->start();
        checkItems(w, w->copyMenu,
                   {{1, "\t\t\tCopy", "copy.png", nullptr, true, "slot_Copy()"},
                    {2, "\t\t\tMove", "move.png", nullptr, true, "slot_Move()"},
                    {3, "\t\t\tPaste", "paste.png", nullptr, false, nullptr},
                    {4, "\t\t\tPaste as..", "paste.png", nullptr, false, nullptr}});
    }

    void textsAreThoseOfTheLanguageFile()
    {
        program_->workFolder().write("lang/test.lang", "[Language]\nVER=102\nOPTIONS=Wahl\n"
                                                       "DELETE=Weg\nPASTE=Rein\n"
                                                       "SELECT=Nimm\nBACK=Rück\n"
                                                       "ADD_BOOKMARK=Merken\n");
        lang = "test";
        const FM* window = program_->start();
        QCOMPARE(window->softKey->text(ZSoftKey::Left), QStringLiteral("Wahl"));
        QCOMPARE(window->optionsMenu->textAt(1), QStringLiteral("\t\t\tWeg"));
        QCOMPARE(window->copyMenu->textAt(2), QStringLiteral("\t\t\tRein"));
        QCOMPARE(window->bookmarkMenu->textAt(0), QStringLiteral("\t\t\tMerken"));
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(shownInBar(), QStringLiteral("Nimm|Rück"));
    }

    void barSaysWhatTheSoftKeysDoNow()
    {
        FM* window = program_->start();
        QCOMPARE(shownInBar(), QStringLiteral("Options|"));
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(shownInBar(), QStringLiteral("Select|Back"));
        pressKey('1');
        // Without a plugin there is nothing to select in it.
        QCOMPARE(top(), window->openWithMenu);
        QCOMPARE(shownInBar(), QStringLiteral("|Back"));
        pressKeys({PhoneKey::SoftRight, '3'});
        QCOMPARE(shownInBar(), QStringLiteral("Select|Back"));
        pressKey(PhoneKey::Up);
        QCOMPARE(shownInBar(), QStringLiteral("|Back"));
        pressKeys({PhoneKey::Left, PhoneKey::Left});
        QCOMPARE(shownInBar(), QStringLiteral("Options|"));
        pressKey(PhoneKey::Left);
        QCOMPARE(shownInBar(), QStringLiteral("|"));
    }

    void barIsEmptyWhileABoxHasItsAnswersInside_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("message") << int(kWidget::Message);
        QTest::newRow("question") << int(kWidget::Question);
        QTest::newRow("plain") << int(kWidget::Plain);
    }

    void barIsEmptyWhileABoxHasItsAnswersInside()
    {
        QFETCH(int, mode);
        program_->start();
        QString seen;
        QTimer watch;
        connect(&watch, &QTimer::timeout, &watch, [&seen] {
            if (textView->isVisible() && seen.isEmpty()) {
                seen = shownInBar();
                pressKey(PhoneKey::SoftRight);
            }
        });
        watch.start(1);
        textView->showText("Title", "Text", Qt::AlignHCenter, QString(), mode);
        QTRY_COMPARE(seen, QStringLiteral("|"));
        textView->init();
        QCOMPARE(shownInBar(), QStringLiteral("Options|"));
    }

    void copyingTakesSevenKeys()
    {
        program_->files().write("a.txt", "text");
        program_->files().makeFolder("to");
        path_tab2 = program_->files().path("to");
        FM* window = program_->start();
        program_->highlight(1, "a.txt");
        pressKeys({PhoneKey::SoftLeft, '3', '1', PhoneKey::Right, PhoneKey::SoftLeft, '3', '3'});
        QCOMPARE(top(), window);
        QCOMPARE(program_->files().read("to/a.txt"), QByteArray("text"));
    }

    void withoutTablesOnlyTheAddItemIsThere()
    {
        FM* window = program_->start();
        QCOMPARE(window->openWithMenu->count(), 0);
        checkItems(window, window->bookmarkMenu,
                   {{0, "\t\t\tAdd Bookmark", "add.png", nullptr, true, "slot_AddBookMark()"}});
    }

    void bookmarksHaveTheirNamesAndNoIconAndAddComesLast()
    {
        program_->workFolder().write("bookmark.cfg",
                                     "Music\n/music\n\tb & <b>\n/b\nG\xC3\xA4rten\n/g");
        FM* window = program_->start();
        ZOptionsMenu* menu = window->bookmarkMenu;
        const QStringList names{"Music", "\tb & <b>", QString::fromUtf8("G\xC3\xA4rten")};
        QCOMPARE(menu->count(), 4);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(menu->idAt(i), i);
            QCOMPARE(menu->textAt(i), names.at(i));
            QVERIFY(menu->iconAt(i).isNull());
            QVERIFY(menu->isItemEnabled(i));
            QCOMPARE(menu->submenuAt(i), nullptr);
            QCOMPARE(takeConnections(window, menu, i), QList<QByteArray>{"slot_BookMark()"});
        }
        checkItem(window, menu, 3,
                  {3, "\t\t\tAdd Bookmark", "add.png", nullptr, true, "slot_AddBookMark()"});
    }

    void chosenBookmarkSendsThePanelThere()
    {
        program_->files().makeFolder("one");
        program_->files().makeFolder("two");
        program_->workFolder().write("bookmark.cfg",
                                     "One\n" + program_->files().path("one").toUtf8() + "\nTwo\n" +
                                         program_->files().path("two").toUtf8());
        const FM* window = program_->start();
        pressKey(PhoneKey::SoftLeft);
        pressKeys(QList<int>(OptionsItem::Bookmarks - 1, PhoneKey::Down));
        pressKey(PhoneKey::Right);
        QCOMPARE(top(), window->bookmarkMenu);
        pressKeys({PhoneKey::Down, PhoneKey::Return});
        QCOMPARE(top(), window);
        QCOMPARE(program_->panel(1)->curPath, program_->files().path("two"));
        QCOMPARE(program_->panel(2)->curPath, program_->files().path());
    }

    void openWithMenuLeavesGapsForPluginsOfOtherKinds()
    {
        program_->workFolder().write("fm_plugins.cfg", "01 0 First\n02 2 Second\n03 1 Third\n"
                                                       "04 9 Fourth\n05 0 Fifth\n");
        FM* window = program_->start();
        ZOptionsMenu* menu = window->openWithMenu;
        QCOMPARE(menu->count(), 3);
        const QList<int> ids{0, 2, 4};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(menu->idAt(i), ids.at(i));
            QVERIFY(menu->isItemEnabled(ids.at(i)));
            QCOMPARE(menu->submenuAt(i), nullptr);
            QCOMPARE(takeConnections(window, menu, ids.at(i)),
                     QList<QByteArray>{"slot_OpenWith()"});
        }
        // With nothing connected any more, choosing the second tells the third of the table.
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Return});
        QCOMPARE(top(), menu);
        pressKeys({PhoneKey::Down, PhoneKey::SoftLeft});
        QCOMPARE(top(), window);
        QCOMPARE(menu->getActiveItemId(), 2);
    }

    void pluginLabelsAreTheirNamesOrTheFirstLineOfTheirFile()
    {
        const ScratchFolder& folder = program_->workFolder();
        folder.write("fm_plugins.cfg", "01 0 Name %1\n07 1 /bin/seven\n12 1 /bin/twelve\n");
        folder.write("plugins/full_path/7/desktop.ini", "Number seven\nmore\n");
        folder.write("plugins/full_path/07/desktop.ini", "Wrong\n");
        const FM* window = program_->start();
        QCOMPARE(window->openWithMenu->count(), 3);
        QCOMPARE(window->openWithMenu->textAt(0), QStringLiteral("\t\t\tName %1"));
        QCOMPARE(window->openWithMenu->textAt(1), QStringLiteral("\t\t\tNumber seven"));
        QCOMPARE(window->openWithMenu->textAt(2), QStringLiteral("\t\t\tUnknown"));
    }

    void pluginIconsAreTheirOwnOrTheUnknownOne()
    {
        const ScratchFolder& folder = program_->workFolder();
        folder.write("fm_plugins.cfg", "01 0 Whole\n02 0 NoPicture\n03 0 NoProgram\n"
                                       "04 1 /bin/four\n05 1 /bin/five\n");
        folder.write("plugins/Whole/Whole");
        folder.write("plugins/Whole/icon.png", plainPng(16, 16, Qt::red));
        folder.write("plugins/NoPicture/NoPicture");
        folder.write("plugins/NoProgram/icon.png", plainPng(16, 16, Qt::blue));
        folder.write("plugins/full_path/4/icon.png", plainPng(16, 16, Qt::green));
        const FM* window = program_->start();
        const ZOptionsMenu* menu = window->openWithMenu;
        QCOMPARE(menu->count(), 5);
        const QImage unknown = pictureFile(work_folder + "res/img/unk_plugin.png");
        QVERIFY(isPlain(menu->iconAt(0).toImage(), {0, 0, 16, 16}, Qt::red));
        QCOMPARE(asImage(menu->iconAt(1)), unknown);
        QCOMPARE(asImage(menu->iconAt(2)), unknown);
        QCOMPARE(menu->textAt(2), QStringLiteral("\t\t\tNoProgram"));
        QVERIFY(isPlain(menu->iconAt(3).toImage(), {0, 0, 16, 16}, Qt::green));
        QCOMPARE(asImage(menu->iconAt(4)), unknown);
    }

    void missingPictureGivesTheIconOfTheItemBefore()
    {
        // The order of filling: plugins, the add item, the copy menu, the options.
        const ScratchFolder folder;
        work_folder = folder.path() + QLatin1Char('/');
        folder.write("fm_plugins.cfg", "01 0 Bare\n02 0 Red\n03 0 Other\n");
        folder.write("plugins/Red/Red");
        folder.write("plugins/Red/icon.png", plainPng(16, 16, Qt::red));
        folder.write("res/img/move.png", plainPng(16, 16, Qt::green));
        folder.write("res/img/mkdir.png", plainPng(16, 16, Qt::blue));
        const FM* window = program_->start();
        const QRect all(0, 0, 16, 16);
        QVERIFY(window->openWithMenu->iconAt(0).isNull());
        QVERIFY(isPlain(window->openWithMenu->iconAt(1).toImage(), all, Qt::red));
        QVERIFY(isPlain(window->openWithMenu->iconAt(2).toImage(), all, Qt::red));
        QVERIFY(isPlain(window->bookmarkMenu->iconAt(0).toImage(), all, Qt::red));
        QVERIFY(isPlain(window->copyMenu->iconAt(0).toImage(), all, Qt::red));
        for (int i = 1; i < 4; ++i)
            QVERIFY(isPlain(window->copyMenu->iconAt(i).toImage(), all, Qt::green));
        for (int i = 0; i < 4; ++i)
            QVERIFY(isPlain(window->optionsMenu->iconAt(i).toImage(), all, Qt::green));
        for (int i = 4; i < window->optionsMenu->count(); ++i)
            QVERIFY(isPlain(window->optionsMenu->iconAt(i).toImage(), all, Qt::blue));
    }

    void brokenPictureGivesTheIconOfTheItemBefore()
    {
        const ScratchFolder folder;
        work_folder = folder.path() + QLatin1Char('/');
        folder.write("fm_plugins.cfg", "01 0 Red\n02 0 Broken\n");
        folder.write("plugins/Red/Red");
        folder.write("plugins/Red/icon.png", plainPng(16, 16, Qt::red));
        folder.write("plugins/Broken/Broken");
        for (const char* name :
             {"plugins/Broken/icon.png", "res/img/unk_plugin.png", "res/img/add.png",
              "res/img/copy.png", "res/img/delete.png", "res/img/props.png"})
            folder.write(name, "this is no picture");
        const FM* window = program_->start();
        const QRect all(0, 0, 16, 16);
        QVERIFY(isPlain(window->openWithMenu->iconAt(1).toImage(), all, Qt::red));
        QVERIFY(isPlain(window->bookmarkMenu->iconAt(0).toImage(), all, Qt::red));
        for (int i = 0; i < 8; ++i)
            QVERIFY(isPlain(window->optionsMenu->iconAt(i).toImage(), all, Qt::red));
    }

    void iconsAreThoseOfTheStart()
    {
        const ScratchFolder folder;
        work_folder = folder.path() + QLatin1Char('/');
        folder.write("res/img/open_with.png", plainPng(16, 16, Qt::red));
        folder.write("res/img/delete.png", plainPng(16, 16, Qt::green));
        const FM* window = program_->start();
        folder.write("res/img/open_with.png", plainPng(16, 16, Qt::blue));
        QVERIFY(QFile::remove(folder.path("res/img/delete.png")));
        pressKey(PhoneKey::SoftLeft);
        const QImage menu = window->optionsMenu->grab().toImage();
        QVERIFY(boundsOf(menu, Qt::blue).isEmpty());
        QCOMPARE(boundsOf(menu, Qt::red).size(), QSize(16, 16));
        QVERIFY(!boundsOf(menu, Qt::green).isEmpty());
    }

    void menusAreWalkedByKeys()
    {
        const FM* window = program_->start();
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(window->optionsMenu->currentPosition(), 0);
        pressKey(PhoneKey::Up);
        QCOMPARE(window->optionsMenu->currentPosition(), window->optionsMenu->count() - 1);
        pressKeys({PhoneKey::Down, PhoneKey::Down, PhoneKey::Down});
        QCOMPARE(window->optionsMenu->currentPosition(), 2);
        pressKey(PhoneKey::Return);
        QCOMPARE(top(), window->copyMenu);
        QVERIFY(window->optionsMenu->isVisible());
        pressKey(PhoneKey::Left);
        QCOMPARE(top(), window->optionsMenu);
        QCOMPARE(window->optionsMenu->currentPosition(), 2);
        pressKey(PhoneKey::Right);
        QCOMPARE(top(), window->copyMenu);
        pressKeys({PhoneKey::SoftRight, PhoneKey::SoftRight});
        QCOMPARE(top(), window);
        QCOMPARE(keyReceiver(), program_->panel(1));
    }

    void emptySubmenuOpensAndCloses()
    {
        const FM* window = program_->start();
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Return});
        QCOMPARE(top(), window->openWithMenu);
        pressKeys({PhoneKey::Down, PhoneKey::Up, PhoneKey::Return, PhoneKey::Right});
        QCOMPARE(top(), window->openWithMenu);
        pressKeys({PhoneKey::SoftRight, PhoneKey::SoftRight});
        QCOMPARE(top(), window);
    }

    void pasteItemsCannotBeChosen()
    {
        const FM* window = program_->start();
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Down, PhoneKey::Down, PhoneKey::Return});
        for (int i = 0; i < 2; ++i) {
            pressKey(PhoneKey::Up);
            QCOMPARE(window->copyMenu->currentPosition(), 3 - i);
            pressKeys({PhoneKey::Return, PhoneKey::SoftLeft, PhoneKey::Right});
            QCOMPARE(top(), window->copyMenu);
            QCOMPARE(window->copyMenu->getActiveItemId(), -1);
        }
    }

    void keysMeantForTheWindowDoNothingToItWhileAMenuIsOpen()
    {
        const FM* window = program_->start();
        pressKeys({PhoneKey::SoftLeft, '*', '#', '0', PhoneKey::Hide, PhoneKey::Modifier, '9'});
        QCOMPARE(top(), window->optionsMenu);
        pressKeys({PhoneKey::Modifier, '3'});
        QCOMPARE(top(), window->copyMenu);
        QVERIFY(window->isVisible());
        QVERIFY(!full_scr);
        QVERIFY(!window->getActiveMultiStat());
        QCOMPARE(window->pendingPlugin, 0);
    }

    void aboutPageHasNoOptions()
    {
        const FM* window = program_->start();
        pressKey(PhoneKey::Left);
        QCOMPARE(window->tabWidget()->currentPageIndex(), 2);
        QCOMPARE(window->softKey->text(ZSoftKey::Left), QString());
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(top(), window);
        pressKey(PhoneKey::Left);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(top(), window->optionsMenu);
    }

    void rebuildingReplacesTheMenusAndLeaksNone()
    {
        FM* window = program_->start();
        const qsizetype menus = menuCount();
        QVERIFY(menus >= 4);
        const int items = window->optionsMenu->count();
        for (int i = 0; i < 20; ++i)
            window->createSoftKeysStab();
        QTRY_COMPARE(menuCount(), menus);
        QCOMPARE(window->softKey->optMenu(ZSoftKey::Left), window->optionsMenu);
        QCOMPARE(window->optionsMenu->submenuAt(2), window->copyMenu);
        QCOMPARE(window->optionsMenu->count(), items);
        QCOMPARE(window->copyMenu->count(), 4);
        QCOMPARE(window->bookmarkMenu->count(), 1);
    }

    void chosenItemMayRebuildAllMenus_data()
    {
        QTest::addColumn<bool>("inSubmenu");
        QTest::newRow("from the options") << false;
        QTest::newRow("from a submenu") << true;
    }

    void chosenItemMayRebuildAllMenus()
    {
        QFETCH(bool, inSubmenu);
        FM* window = program_->start();
        const qsizetype menus = menuCount();
        constexpr int Times = 5;
        for (int i = 1; i <= Times; ++i) {
            const int id = inSubmenu ? 1 : 2;
            ZOptionsMenu* menu = inSubmenu ? window->copyMenu : window->optionsMenu;
            takeConnections(window, menu, id);
            QVERIFY(menu->connectItem(id, this, "rebuildMenus()"));
            pressKeys({PhoneKey::SoftLeft, PhoneKey::Down});
            if (inSubmenu)
                pressKeys({PhoneKey::Down, PhoneKey::Return});
            pressKey(PhoneKey::Return);
            QCOMPARE(rebuilt_, i);
            QCOMPARE(top(), window);
        }
        QTRY_COMPARE(menuCount(), menus);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(top(), window->optionsMenu);
    }

    void menusGoWithTheWindow()
    {
        program_->start();
        program_.reset();
        QCOMPARE(menuCount(), 0);
    }

private:
    std::unique_ptr<Program> program_;
    int rebuilt_ = 0;
};

QUARN_TEST_MAIN(tst_SoftKeys)
#include "tst_softkeys.moc"
