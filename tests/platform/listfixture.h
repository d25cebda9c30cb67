#pragma once

#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QWidget>

/// A shown list box with the focus, in a main widget that writes down which keys are left to it.
struct ListFixture {
    class Main : public QWidget
    {
    public:
        Main() : QWidget(ZScreen::instance())
        {
            hide();
            resize(240, 320);
            ZScreen::instance()->place(this, ZScreen::Layer::Main);
        }

        QList<int> keys;
        QList<int> released;

    protected:
        void keyPressEvent(QKeyEvent* event) override { keys.append(PhoneKey::code(*event)); }
        void keyReleaseEvent(QKeyEvent* event) override { released.append(PhoneKey::code(*event)); }
    };

    explicit ListFixture(int height = 250)
        : box(new ZListBox("%I%M", &main, 0, ZSkinService::clsListBox))
    {
        box->setGeometry(0, 0, 240, height);
        main.show();
        box->setFocus();
    }

    void add(const QString& name, int index, const QString& detail = QString()) const
    {
        auto* row = new ZListBoxItem(box, layout);
        row->appendSubItem(1, name, false);
        if (!detail.isNull())
            row->appendSubItem(1, detail, false);
        box->insertItem(row, index);
    }

    /// Adds rows "0", "1" and so on.
    void fill(int count) const
    {
        for (int i = 0; i < count; ++i)
            add(QString::number(i), -1);
    }

    QStringList names() const
    {
        QStringList result;
        for (int row = 0; row < box->count(); ++row)
            result.append(box->item(row)->getSubItemText(1, 0));
        return result;
    }

    /// The middle of the n-th row from the top, in pixels of the screen.
    QPoint rowPoint(int shownRow) const
    {
        return {60, shownRow * box->rowHeight() + box->rowHeight() / 2};
    }

    Main main;
    ZListBox* box;
    QString layout = "%I%M";
};
