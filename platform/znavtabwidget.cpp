#include "platform/znavtabwidget.h"

#include "platform/keymap.h"
#include "platform/shownname.h"
#include "platform/zaccessible.h"
#include "platform/zaccessibleparts.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

class ZNavTabWidget::Bar : public QWidget, public ZAccessibleSource
{
public:
    static constexpr int MarkHeight = 2; ///< of the line under the tab in front

    struct Tab {
        QPixmap icon;
        QString label;
    };

    Bar(ZNavTabWidget* owner, unsigned widgetClass)
        : QWidget(owner), owner_(owner), look_(ZSkinService::look(widgetClass))
    {
        setFixedHeight(ZSkinService::TabBarHeight);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    QList<Tab> tabs;

    QAccessibleInterface* makeAccessible() override;

    QRect tabRect(int index) const
    {
        const int count = int(tabs.size());
        const int left = width() * index / count;
        return {left, 0, width() * (index + 1) / count - left, height()};
    }

    int tabAt(QPoint point) const
    {
        for (int i = 0; i < tabs.size(); ++i) {
            if (tabRect(i).contains(point))
                return i;
        }
        return -1;
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), look_.background);
        for (int i = 0; i < tabs.size(); ++i)
            paintTab(painter, i);
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        owner_->setCurrentPage(tabAt(event->position().toPoint()));
        event->accept();
    }

private:
    class Accessible;

    void paintTab(QPainter& painter, int index) const
    {
        const Tab& tab = tabs.at(index);
        const QRect area = tabRect(index);
        const bool current = index == owner_->currentPageIndex();
        if (current) {
            painter.fillRect(area, look_.highlight);
            // At the bottom: at the top there may be the line of the header.
            painter.fillRect(area.left(), area.bottom() + 1 - MarkHeight, area.width(), MarkHeight,
                             look_.mark);
        }
        const QSize size = pixmapSize(tab.icon);
        const QFontMetrics metrics(font());
        const QString label =
            metrics.elidedText(tab.label, Qt::ElideRight, area.width() - size.width());
        const int labelWidth = metrics.horizontalAdvance(label);
        int x = area.center().x() - (size.width() + labelWidth) / 2;
        drawPicture(painter, {x, area.top() + (area.height() - size.height()) / 2}, tab.icon);
        x += size.width();
        painter.setPen(current ? look_.highlightText : look_.text);
        painter.drawText(x, area.top(), labelWidth, area.height(), Qt::AlignVCenter, label);
    }

    ZNavTabWidget* owner_;
    const ZSkinService::Look& look_;
};

/// What the bar tells programs that read the screen: its parts are the tabs.
class ZNavTabWidget::Bar::Accessible final : public ZAccessibleParts
{
public:
    explicit Accessible(Bar* bar) : ZAccessibleParts(bar, QAccessible::PageTabList) {}

    int partCount() const override
    {
        const Bar* bar = as<Bar>();
        return bar != nullptr ? int(bar->tabs.size()) : 0;
    }

    QAccessible::Role partRole(int /*part*/) const override { return QAccessible::PageTab; }

    /// A tab that has only a picture is called what its page is, or by its number.
    QString partText(int part, QAccessible::Text kind) const override
    {
        const Bar* bar = as<Bar>();
        if (kind != QAccessible::Name || bar == nullptr)
            return {};
        const QString& label = bar->tabs.at(part).label;
        const QString page = withMarks(bar->owner_->pages_->widget(part)->accessibleName());
        if (!label.isEmpty())
            return label;
        return page.isEmpty() ? QString::number(part + 1) : page;
    }

    QAccessible::State partState(int part) const override
    {
        QAccessible::State state;
        state.selectable = true;
        state.selected = part == currentPart();
        return state;
    }

    QRect partRect(int part) const override
    {
        const Bar* bar = as<Bar>();
        return bar != nullptr ? bar->tabRect(part) : QRect();
    }

    QStringList partActions(int /*part*/) const override
    {
        return ZScreen::instance()->takesInput(as<Bar>()) ? QStringList{pressAction()}
                                                          : QStringList();
    }

    void actOn(int part, const QString& /*action*/) override
    {
        as<Bar>()->owner_->setCurrentPage(part);
    }

    int partAt(QPoint point) const override
    {
        const Bar* bar = as<Bar>();
        return bar != nullptr ? bar->tabAt(point) : -1;
    }

    int currentPart() const override
    {
        const Bar* bar = as<Bar>();
        return bar != nullptr ? bar->owner_->currentPageIndex() : -1;
    }
};

QAccessibleInterface* ZNavTabWidget::Bar::makeAccessible()
{
    return new Accessible(this);
}

ZNavTabWidget::ZNavTabWidget([[maybe_unused]] int style, [[maybe_unused]] bool buttons,
                             [[maybe_unused]] bool closable, QWidget* parent, const char* name,
                             unsigned widgetClass)
    : QWidget(parent)
{
    setObjectName(QLatin1String(name));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    bar_ = new Bar(this, widgetClass);
    pages_ = new QStackedWidget(this);
    layout->addWidget(bar_);
    layout->addWidget(pages_, 1);
}

void ZNavTabWidget::addTab(QWidget* page, const QPixmap& icon, const QString& label)
{
    bar_->tabs.append({icon, label});
    pages_->addWidget(page);
    bar_->update();
}

int ZNavTabWidget::currentPageIndex() const
{
    return pages_->currentIndex();
}

QWidget* ZNavTabWidget::currentPage() const
{
    return pages_->currentWidget();
}

void ZNavTabWidget::setCurrentPage(int index)
{
    const int before = currentPageIndex();
    if (index == before || index < 0 || index >= count())
        return;
    pages_->setCurrentIndex(index);
    bar_->update();
    ZAccessible::tellSelection(bar_, before);
    ZAccessible::tellSelection(bar_, index);
    currentPage()->setFocus(Qt::OtherFocusReason);
    emit currentChanged(currentPage());
}

int ZNavTabWidget::count() const
{
    return pages_->count();
}

void ZNavTabWidget::keyPressEvent(QKeyEvent* event)
{
    const int code = PhoneKey::code(*event);
    if ((code != PhoneKey::Left && code != PhoneKey::Right) || count() == 0) {
        event->ignore();
        return;
    }
    const int step = code == PhoneKey::Right ? 1 : count() - 1;
    setCurrentPage((currentPageIndex() + step) % count());
    event->accept();
}
