// A bare window with one label that ends when it has been painted: what any start costs.

#include <QApplication>
#include <QLabel>
#include <QPaintEvent>

namespace
{

class PaintedOnce : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QLabel::paintEvent(event);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }
};

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    PaintedOnce label(QStringLiteral("Quarn"));
    label.resize(240, 320);
    label.show();
    return QApplication::exec();
}
