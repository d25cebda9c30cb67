// The list of the trash with what is on file systems that others answer for.

#include "extras/trashscreen.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "tests/extras/safescreens.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <memory>

class tst_TrashScreen : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        loadTexts(QString());
        main_ = showMainWidget();
        places_.emplace(TrashPlaces::Elsewhere);
    }
    void cleanup()
    {
        main_.reset();
        places_.reset();
    }

    void whatIsFarIsListedAndRestored()
    {
        places_->tellMount("fuse.sshfs", "rw");
        making::file(places_->top("a"), "a");
        QCOMPARE(places_->trash().put(places_->top("a")).outcome, Trash::Outcome::Done);
        QCOMPARE(places_->trash().entries().size(), 0);
        QStringList first;
        once([] { return pageRows().size() == 1 && pageHasKeys(); },
             [&first] {
                 first = pageRows();
                 pressKey(PhoneKey::SoftLeft);
                 pressKey('1');
                 once([] { return pageRows().isEmpty() && pageHasKeys(); },
                      [] { pressKey(PhoneKey::SoftRight); });
             });
        QVERIFY(showTrashScreen({}, places_->places()));
        QVERIFY(first.value(0).startsWith("a|"));
        QCOMPARE(readFile(places_->top("a")), QByteArray("a"));
    }

private:
    std::unique_ptr<QWidget> main_;
    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_TrashScreen)
#include "tst_trashscreen.moc"
