// Usage: bench_start_bare FOLDER
//
// A bare window with a plain list of a folder's names, which ends when it has been painted: what
// any start to a first listing costs.

#include <QApplication>
#include <QDir>
#include <QListView>
#include <QPaintEvent>
#include <QStringListModel>

namespace
{

class PaintedOnce : public QListView
{
public:
    using QListView::QListView;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QListView::paintEvent(event);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }
};

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QDir folder(QFile::decodeName(argv[argc - 1]));
    QStringListModel names(
        folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot));
    PaintedOnce list;
    list.setModel(&names);
    list.resize(240, 320);
    list.show();
    return QApplication::exec();
}
