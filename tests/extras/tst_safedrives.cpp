// What a user is told of drives that cannot hold all.

#include "platform/keymap.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/safecommandtest.h"
#include "tests/extras/safescreens.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/testmain.h"

#include <QFile>

#include <cerrno>
#include <sys/xattr.h>

class tst_SafeDrives : public SafeCommandTest
{
    Q_OBJECT

private slots:
    void whatADriveDoesNotHoldIsOneRowAfterAMove()
    {
        fixture_->write(1, {"f/a", "f/b"});
        for (const char* name : {"f/a", "f/b"})
            QCOMPARE(setxattr(QFile::encodeName(fixture_->left(name)).constData(), "user.quarn",
                              "x", 1, 0),
                     0);
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Move, "f", 2);
        bool wasTold = false;
        once(pageHasKeys, [&wasTold] {
            wasTold = true;
            QCOMPARE(pageRows(), QStringList("Not kept on this drive|Attributes"));
            QCOMPARE(pageLines(), QStringList());
            QVERIFY(pageNotes().first().endsWith("/right"));
            pressKey(PhoneKey::SoftRight);
        });
        CallFaults faults;
        faults.separateFolders();
        faults.failSetting("user.", EOPNOTSUPP);
        fixture_->paste({yes});
        QVERIFY(wasTold);
        QVERIFY(QFile::exists(fixture_->right("f/b")) && !QFile::exists(fixture_->left("f")));
    }
};

QUARN_TEST_MAIN(tst_SafeDrives)
#include "tst_safedrives.moc"
