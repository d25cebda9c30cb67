#include "platform/zlistbox.h"

#include "platform/keymap.h"
#include "platform/scrollthumb.h"
#include "platform/zglide.h"
#include "platform/zmotion.h"
#include "platform/zpixmap.h"

#include <QAbstractItemDelegate>
#include <QAbstractListModel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

class ZListBox::Model : public QAbstractListModel
{
public:
    explicit Model(ZListBox* box) : QAbstractListModel(box), box_(box) {}

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : committed_;
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole)
            return {};
        const ZListBoxItem* item = box_->item(index.row());
        return item != nullptr ? item->getSubItemText(1, 0) : QVariant();
    }

    /// Makes `rows` the size of the list, whatever changed in it.
    void commit(int rows)
    {
        beginResetModel();
        committed_ = rows;
        endResetModel();
    }

private:
    ZListBox* box_;
    int committed_ = 0;
};

class ZListBox::Delegate : public QAbstractItemDelegate
{
public:
    explicit Delegate(ZListBox* box) : QAbstractItemDelegate(box), box_(box) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        const ZListBoxItem* item = box_->item(index.row());
        if (item == nullptr)
            return;
        ZListRowPainter::paint(*painter, option.rect, *item, box_->rowState(index.row()));
    }

    QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& /*index*/) const override
    {
        return {1, box_->rowHeight_};
    }

private:
    ZListBox* box_;
};

ZListBox::ZListBox([[maybe_unused]] const QString& type, QWidget* parent,
                   [[maybe_unused]] unsigned flags, unsigned widgetClass)
    : QListView(parent),
      model_(new Model(this)),
      look_(&ZSkinService::look(widgetClass)),
      glide_(new ZGlide(this))
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerItem);
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setUniformItemSizes(true);
    setAutoScroll(false);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, look_->background);
    colours.setColor(QPalette::Window, look_->background);
    setPalette(colours);
    setAutoFillBackground(true);
    setModel(model_);
    setItemDelegate(new Delegate(this));
    fonts_.fill(font());
    updateRowHeight();
    connect(glide_, &ZGlide::moved, this, [this] { viewport()->update(rowRect(currentItem())); });
}

ZListBox::~ZListBox()
{
    for (const Row& row : rows_)
        delete row.item;
}

void ZListBox::insertItem(ZListBoxItem* item, int index, [[maybe_unused]] bool updateLater)
{
    if (index < 0 || index >= count())
        rows_.push_back({item});
    else
        rows_.insert(rows_.begin() + index, {item});
    queueCommit();
}

void ZListBox::appendLater(int rows, int lines, QSize icon, std::function<ZListBoxItem*(int)> make)
{
    makeItem_ = std::move(make);
    rows_.reserve(rows_.size() + size_t(rows) + 1);
    for (int number = 0; number < rows; ++number)
        rows_.push_back({nullptr, number});
    fitRows(lines, icon);
    queueCommit();
}

void ZListBox::queueCommit()
{
    if (uncommitted_)
        return;
    uncommitted_ = true;
    QMetaObject::invokeMethod(this, &ZListBox::commitRows, Qt::QueuedConnection);
}

void ZListBox::clear()
{
    for (const Row& row : rows_)
        delete row.item;
    // Of a long list the memory is given back.
    std::vector<Row>().swap(rows_);
    makeItem_ = nullptr;
    uncommitted_ = false;
    iconWidth_ = 0;
    iconHeight_ = 0;
    lines_ = 1;
    model_->commit(0);
    glide_->stop();
    updateRowHeight();
}

void ZListBox::setSpokenNotes(std::function<QString(int)> notes)
{
    spokenNotes_ = std::move(notes);
}

ZListBoxItem* ZListBox::item(int row) const
{
    if (row < 0 || row >= count())
        return nullptr;
    Row& wanted = rows_[size_t(row)];
    if (wanted.item == nullptr) {
        making_ = true;
        wanted.item = makeItem_(wanted.number);
        making_ = false;
    }
    return wanted.item;
}

void ZListBox::itemChanged(const ZListBoxItem& item)
{
    fitRows(item.subItemCount(1), pixmapSize(item.pixmap(0)));
    if (!uncommitted_ && !making_)
        viewport()->update();
}

void ZListBox::fitRows(int lines, QSize icon)
{
    lines = std::max(lines_, lines > 1 ? 2 : 1);
    if (icon.width() <= iconWidth_ && icon.height() <= iconHeight_ && lines <= lines_)
        return;
    iconWidth_ = std::max(iconWidth_, icon.width());
    iconHeight_ = std::max(iconHeight_, icon.height());
    lines_ = lines;
    updateRowHeight();
}

void ZListBox::makeVisibleRows()
{
    if (!makeItem_)
        return;
    const int top = topItem();
    // Rows may grow by what comes into view, and so fewer be seen, never more.
    const int end = std::min(top + visibleItems(), count());
    for (int row = top; row < end; ++row)
        item(row);
}

void ZListBox::commitRows()
{
    if (!uncommitted_)
        return;
    uncommitted_ = false;
    const int current = currentIndex().row();
    const int top = verticalScrollBar()->value();
    model_->commit(count());
    executeDelayedItemsLayout();
    if (current >= 0) {
        silent_ = true;
        setCurrentIndex(model_->index(current));
        silent_ = false;
        verticalScrollBar()->setValue(top);
    }
}

int ZListBox::currentItem() const
{
    return currentIndex().row();
}

void ZListBox::setCurrentItem(int row)
{
    commitRows();
    if (row < 0 || count() == 0)
        return;
    const int target = std::min(row, count() - 1);
    ensureVisible(target);
    setCurrentIndex(model_->index(target));
}

void ZListBox::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QListView::currentChanged(current, previous);
    viewport()->update();
    restartGlide();
    ZAccessible::tellSelection(this, previous.row());
    ZAccessible::tellSelection(this, current.row());
    if (current.isValid() && !silent_)
        emit highlighted(current.row());
}

bool ZListBox::itemChecked(int row) const
{
    // One that was not made yet was not checked.
    const ZListBoxItem* known = row >= 0 && row < count() ? rows_[size_t(row)].item : nullptr;
    return known != nullptr && known->isChecked();
}

bool ZListBox::itemVisible(int row)
{
    const int top = topItem();
    return row >= top && row < top + visibleItems();
}

void ZListBox::setBottomItem(int row)
{
    commitRows();
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(row - visibleItems() + 1);
}

int ZListBox::topItem()
{
    commitRows();
    executeDelayedItemsLayout();
    return verticalScrollBar()->value();
}

int ZListBox::visibleItems()
{
    commitRows();
    return std::clamp(viewport()->height() / std::max(rowHeight_, 1), 1, std::max(count(), 1));
}

void ZListBox::ensureVisible(int row)
{
    const int top = topItem();
    if (row < top)
        verticalScrollBar()->setValue(row);
    else if (row >= top + visibleItems())
        setBottomItem(row);
}

void ZListBox::setItemFont(int region, const QFont& font, bool highlighted)
{
    constexpr int TextRegion = 2;
    QFont& kept = fonts_.at(highlighted ? 1 : 0);
    if (region != TextRegion || kept == font)
        return;
    kept = font;
    updateRowHeight();
}

int ZListBox::rowHeight() const
{
    return rowHeight_;
}

void ZListBox::updateRowHeight()
{
    const int height = std::max(ZListRowPainter::rowHeight(fonts_[0], lines_, iconHeight_),
                                ZListRowPainter::rowHeight(fonts_[1], lines_, iconHeight_));
    if (height == rowHeight_)
        return;
    rowHeight_ = height;
    fitViewport();
    scheduleDelayedItemsLayout();
}

void ZListBox::fitViewport()
{
    setViewportMargins(0, 0, 0, height() > rowHeight_ ? height() % rowHeight_ : 0);
}

void ZListBox::resizeEvent(QResizeEvent* event)
{
    fitViewport();
    QListView::resizeEvent(event);
    if (currentItem() >= 0)
        ensureVisible(currentItem());
}

void ZListBox::selectRow(int row)
{
    ZListBoxItem* chosen = item(row);
    if (chosen == nullptr)
        return;
    chosen->setChecked(!chosen->isChecked());
    emit selected(row);
}

void ZListBox::keyPressEvent(QKeyEvent* event)
{
    const int code = PhoneKey::code(*event);
    commitRows();
    if (code == PhoneKey::Up && currentItem() > 0) {
        setCurrentItem(currentItem() - 1);
    } else if (code == PhoneKey::Down) {
        setCurrentItem(currentItem() + 1);
    } else if (PhoneKey::isSelect(code)) {
        // A held key would walk down into folder after folder.
        if (!event->isAutoRepeat())
            selectRow(currentItem());
    } else if (code != PhoneKey::Up) {
        event->ignore();
        return;
    }
    event->accept();
}

int ZListBox::rowAt(QPoint point)
{
    if (!viewport()->rect().contains(point))
        return -1;
    const int row = topItem() + point.y() / std::max(rowHeight_, 1);
    return row < count() ? row : -1;
}

void ZListBox::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    finger_.press(event->position().toPoint().y(), topItem());
}

void ZListBox::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
    if (const auto top = finger_.move(event->position().toPoint().y(), rowHeight_))
        verticalScrollBar()->setValue(*top);
}

void ZListBox::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    const int row = finger_.release() ? rowAt(event->position().toPoint()) : -1;
    if (row < 0)
        return;
    const bool again = row == currentItem();
    setCurrentItem(row);
    if (again || item(row)->layout().checkBox)
        selectRow(row);
}

void ZListBox::mouseDoubleClickEvent(QMouseEvent* event)
{
    mousePressEvent(event);
}

ZListRowPainter::State ZListBox::rowState(int row) const
{
    const bool highlighted = row == currentItem();
    return {highlighted, iconWidth_, fonts_.at(highlighted ? 1 : 0), look_,
            highlighted ? glide_->offset() : -1};
}

QRect ZListBox::rowRect(int row)
{
    return {0, (row - topItem()) * rowHeight_, viewport()->width(), rowHeight_};
}

void ZListBox::restartGlide()
{
    const ZListBoxItem* current = hasFocus() ? item(currentItem()) : nullptr;
    if (current == nullptr || !ZMotion::isEnabled())
        return glide_->stop();
    const ZListRowPainter::State state = rowState(currentItem());
    glide_->start(ZListRowPainter::nameWidth(*current, state) -
                  ZListRowPainter::nameRect(rowRect(currentItem()), *current, state).width());
}

void ZListBox::focusInEvent(QFocusEvent* event)
{
    QListView::focusInEvent(event);
    restartGlide();
    ZAccessible::tellFocusSoon(this);
}

void ZListBox::focusOutEvent(QFocusEvent* event)
{
    QListView::focusOutEvent(event);
    glide_->stop();
}

void ZListBox::setEmptyText(const QString& text)
{
    if (emptyText_ == text)
        return;
    emptyText_ = text;
    viewport()->update();
}

void ZListBox::paintEvent(QPaintEvent* event)
{
    commitRows();
    makeVisibleRows();
    QListView::paintEvent(event);
    const bool scrolls = count() > visibleItems();
    if (!scrolls && emptyText_.isEmpty())
        return;
    QPainter painter(viewport());
    if (scrolls)
        paintThumb(painter);
    else
        paintEmptyText(painter);
}

void ZListBox::paintEmptyText(QPainter& painter)
{
    // In the middle of what is seen to be free, which reaches below the whole rows.
    const int top = count() * rowHeight_;
    const QRect room(0, top, viewport()->width(), height() - top);
    painter.setFont(fonts_[0]);
    if (viewport()->height() - top < 2 * painter.fontMetrics().height())
        return;
    painter.setPen(look_->secondaryText);
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(emptyText_, Qt::ElideRight, room.width()));
}

void ZListBox::paintThumb(QPainter& painter)
{
    ScrollThumb::of(viewport()->height(), visibleItems(), count(), topItem())
        .paint(painter, {viewport()->width() - ZSkinService::ScrollThumbWidth, 0}, look_->thumb);
}
