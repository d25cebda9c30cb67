#include "platform/zlistboxitem.h"

#include "platform/zlistbox.h"

#include <QHash>

namespace
{

ZListRowLayout parseLayout(const QString& text)
{
    ZListRowLayout layout;
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text.at(i) != QLatin1Char('%'))
            continue;
        const QChar kind = text.at(++i);
        layout.icon = layout.icon || kind == QLatin1Char('I');
        layout.checkBox = layout.checkBox || kind == QLatin1Char('C');
        if (kind != QLatin1Char('M'))
            continue;
        layout.text = true;
        while (i + 1 < text.size() && text.at(i + 1).isDigit() && layout.textWidth < 10000)
            layout.textWidth = layout.textWidth * 10 + text.at(++i).digitValue();
    }
    return layout;
}

} // namespace

const ZListRowLayout* ZListRowLayout::of(const QString& layout)
{
    static QHash<QString, std::shared_ptr<const ZListRowLayout>> known;
    auto found = known.find(layout);
    if (found == known.end())
        found = known.insert(layout, std::make_shared<const ZListRowLayout>(parseLayout(layout)));
    return found->get();
}

ZListBoxItem::ZListBoxItem(ZListBox* box, const QString& layout)
    : box_(box), layout_(ZListRowLayout::of(layout))
{
}

void ZListBoxItem::setPixmap(int slot, const QPixmap& pixmap)
{
    if (slot != 0)
        return;
    icon_ = pixmap;
    box_->itemChanged(*this);
}

QPixmap ZListBoxItem::pixmap(int slot) const
{
    return slot == 0 ? icon_ : QPixmap();
}

void ZListBoxItem::appendSubItem(int line, const QString& text, bool separator,
                                 const QPixmap* pixmap)
{
    subItems_.push_back({text, pixmap != nullptr ? std::make_unique<QPixmap>(*pixmap) : nullptr,
                         static_cast<short>(line), separator});
    box_->itemChanged(*this);
}

const ZListBoxItem::SubItem* ZListBoxItem::subItem(int line, int index) const
{
    for (const SubItem& item : subItems_) {
        if (item.line == line && index-- == 0)
            return &item;
    }
    return nullptr;
}

void ZListBoxItem::setSubItemText(int line, int index, const QString& text)
{
    for (SubItem& item : subItems_) {
        if (item.line != line || index-- != 0)
            continue;
        if (item.text != text) {
            item.text = text;
            box_->itemChanged(*this);
        }
        return;
    }
}

QString ZListBoxItem::getSubItemText(int line, int index, bool* found) const
{
    const SubItem* item = subItem(line, index);
    if (found != nullptr)
        *found = item != nullptr;
    return item != nullptr ? item->text : QString();
}

int ZListBoxItem::subItemCount(int line) const
{
    int count = 0;
    for (const SubItem& item : subItems_)
        count += item.line == line ? 1 : 0;
    return count;
}

void ZListBoxItem::setChecked(bool checked)
{
    if (!layout_->checkBox || !isEnabled() || checked_ == checked)
        return;
    checked_ = checked;
    box_->itemChanged(*this);
}
