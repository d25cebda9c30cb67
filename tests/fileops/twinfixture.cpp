#include "tests/fileops/twinfixture.h"

#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "tests/support/keys.h"
#include "widgets/kwidget.h"

#include <QSet>
#include <QTest>

namespace
{

constexpr int MostMessages = 5;
constexpr qsizetype MostFailures = 20;
constexpr qsizetype LongestName = 255;
constexpr qsizetype NamesAtATime = 12;
/// Commands that change nothing share a listing.
constexpr qsizetype NamesLookedAtATime = 64;

} // namespace

TwinFixture::TwinFixture(const QList<QByteArray>& names, Form form, bool twinsRight,
                         const QByteArray& end)
    : fixture_(ScratchFolder::Memory),
      top_(fixture_.files().path().toLocal8Bit()),
      end_(end),
      form_(form),
      twinsRight_(twinsRight)
{
    for (const QByteArray& name : names)
        if (name.size() + end.size() <= LongestName)
            names_.append(name + end);
    std::sort(names_.begin(), names_.end());
    fixture_.log().setShell(CommandLog::quietShell);
    setOdd(names_);
    make();
}

void TwinFixture::setOdd(const QList<QByteArray>& names)
{
    odd_ = names;
    twins_.clear();
    for (const QByteArray& name : names)
        for (const QByteArray& twin : twinsOf(name.chopped(end_.size())))
            if (twin.size() + end_.size() <= LongestName)
                twins_.insert(twin + end_);
    twins_ -= QSet<QByteArray>(names.begin(), names.end());
}

TwinFixture::~TwinFixture()
{
    emptyFolder(top_);
}

void TwinFixture::leaveOutWhatTheShellChanges()
{
    names_.removeIf([](const QByteArray& name) { return !survivesTheShell(name); });
}

void TwinFixture::leaveOutSeveralLines()
{
    names_.removeIf(
        [](const QByteArray& name) { return name.contains('\n') || name.contains('\r'); });
}

QByteArray TwinFixture::at(const char* folder, const QByteArray& name) const
{
    const QByteArray path = top_ + '/' + folder;
    return name.isEmpty() ? path : path + '/' + name;
}

QByteArray TwinFixture::linkTarget(const QByteArray& name) const
{
    for (const QByteArray& twin : twinsOf(name))
        if (twins_.contains(twin))
            return twin;
    return "../file";
}

QByteArray TwinFixture::contentBehind(const QByteArray& name) const
{
    if (form_ == FolderLinks)
        return "in the folder";
    if (form_ != Links)
        return contentOf(name);
    const QByteArray target = linkTarget(name);
    return target == "../file" ? QByteArray("the file") : contentOf(target);
}

void TwinFixture::make()
{
    writeFile(top_ + "/file", "the file");
    if (!isThere(top_ + "/folder"))
        makeFolder(top_ + "/folder");
    writeFile(top_ + "/folder/in", "in the folder");
    for (const QByteArray& twin : twins_) {
        writeFile(left(twin), contentOf(twin));
        if (twinsRight_)
            writeFile(right(twin), "right " + twin);
    }
    for (const QByteArray& name : std::as_const(odd_))
        makeOdd(name);
}

void TwinFixture::makeOdd(const QByteArray& name) const
{
    const QByteArray path = left(name);
    const QByteArray mistaken = QString::fromUtf8(name).toUtf8().left(LongestName);
    switch (form_) {
    case Files:
        writeFile(path, contentOf(name));
        break;
    case Folders:
        makeFolder(path);
        makeFolder(path + "/folder");
        writeFile(path + "/in", contentOf(name));
        writeFile(path + '/' + name, contentOf(name));
        writeFile(path + "/folder/" + name, contentOf(name));
        if (twinsOf(name).contains(mistaken))
            writeFile(path + '/' + mistaken, contentOf(mistaken));
        break;
    case Links:
        makeLink(path, linkTarget(name));
        break;
    case FolderLinks:
        makeLink(path, "../folder");
        break;
    }
}

void TwinFixture::makeAnew()
{
    now_.reset();
    emptyFolder(left());
    emptyFolder(right());
    make();
    fixture_.panel(1)->setDir(fixture_.left(), 0);
    fixture_.panel(2)->setDir(fixture_.right(), 0);
    fixture_.goTo(1);
}

void TwinFixture::start()
{
    fixture_.start();
}

void TwinFixture::highlight(const QByteArray& folder, const QByteArray& name)
{
    const bool known = folder == left() && !leftRows_.isEmpty();
    const QList<QByteArray> rows = known ? leftRows_ : rowsOf(folder);
    FileBrowserFtab* panel = fixture_.window()->activePanel();
    if (panel->count() != rows.size())
        fail(QStringLiteral("%1 rows for %2 entries").arg(panel->count()).arg(rows.size()));
    else if (rows.contains(name))
        panel->setCurrentItem(int(rows.indexOf(name)));
    else
        fail(QStringLiteral("there is no entry to highlight"));
}

void TwinFixture::dismissMessages()
{
    for (int i = 0; i < MostMessages && textView->isUp(); ++i) {
        QVERIFY(QTest::qWaitFor([] { return keyReceiver() == textView; }));
        pressKey(PhoneKey::SoftRight);
    }
    expect(!textView->isUp(), "a box stays");
}

qsizetype TwinFixture::noted(const char* kind) const
{
    return lines_.filter(QLatin1String(kind)).size();
}

void TwinFixture::onEach(const Command& command, const Change& change, const Command& prepare)
{
    for (qsizetype i = 0; i < names_.size() && failures_.size() < MostFailures; ++i) {
        if (i % NamesAtATime == 0 && names_.size() > NamesAtATime)
            showAnew(names_.mid(i, NamesAtATime));
        current_ = names_.at(i);
        if (prepare) {
            prepare(current_);
            now_.reset();
        }
        run(current_, command, change);
    }
}

void TwinFixture::lookAtEach(const Command& command, const Command& check, const Command& prepare)
{
    for (qsizetype i = 0; i < names_.size() && failures_.size() < MostFailures;
         i += NamesLookedAtATime) {
        const QList<QByteArray> names = names_.mid(i, NamesLookedAtATime);
        showAnew(names);
        if (prepare)
            for (const QByteArray& name : names)
                prepare(name);
        const ByteTree expected = ByteTree::of(top_);
        leftRows_ = rowsOf(left());
        for (const QByteArray& name : names) {
            current_ = name;
            fixture_.log().take();
            command(name);
            lines_ = fixture_.log().take();
            check(name);
            dismissMessages();
        }
        leftRows_.clear();
        current_ = names.first() + " and those behind it";
        compare(expected);
    }
}

void TwinFixture::showAnew(const QList<QByteArray>& names)
{
    setOdd(names);
    makeAnew();
}

void TwinFixture::run(const QByteArray& name, const Command& command, const Change& change)
{
    fixture_.log().take();
    ByteTree expected = now_ ? std::move(*now_) : ByteTree::of(top_);
    now_.reset();
    if (!expected.has("left/" + name)) {
        fail(QStringLiteral("it is gone before its turn"));
        makeAnew();
        return;
    }
    command(name);
    finish([&](ByteTree& tree) { change(tree, name); }, expected);
}

void TwinFixture::onMany(const ManyCommand& command, const ManyChange& change,
                         const ManyCommand& prepare)
{
    for (qsizetype i = 0; i < names_.size(); i += NamesAtATime) {
        if (failures_.size() >= MostFailures)
            return;
        const QList<QByteArray> names = names_.mid(i, NamesAtATime);
        current_ = names.first() + " and those behind it";
        showAnew(names);
        if (prepare)
            prepare(names);
        fixture_.log().take();
        ByteTree expected = ByteTree::of(top_);
        command(names);
        finish([&](ByteTree& tree) { change(tree, names); }, expected);
    }
}

void TwinFixture::mark(const QList<QByteArray>& names)
{
    const QList<QByteArray> rows = rowsOf(left());
    FileBrowserFtab* panel = fixture_.window()->activePanel();
    pressKey('0');
    for (const QByteArray& name : names) {
        panel->setCurrentItem(int(rows.indexOf(name)));
        pressKey(PhoneKey::Return);
    }
}

void TwinFixture::finish(const std::function<void(ByteTree& tree)>& change, ByteTree& expected)
{
    lines_ = fixture_.log().take();
    change(expected);
    dismissMessages();
    compare(expected);
}

void TwinFixture::compare(const ByteTree& expected)
{
    now_ = ByteTree::of(top_);
    const QStringList differences = expected.differences(*now_);
    for (const QString& difference : differences.mid(0, 4))
        fail(difference);
    if (!differences.isEmpty())
        makeAnew();
}

void TwinFixture::fail(const QString& what)
{
    failures_.append(shown(current_) + QStringLiteral(": ") + what);
}

void TwinFixture::expect(bool holds, const char* what)
{
    if (!holds)
        fail(QLatin1String(what));
}

void TwinFixture::verify() const
{
    const QString text =
        QStringLiteral("%1 failures:\n").arg(failures_.size()) + failures_.join(QLatin1Char('\n'));
    QVERIFY2(failures_.isEmpty(), qPrintable(text));
}
