#pragma once

#include <QWidget>

class QPixmap;
class QStackedWidget;

/// Pages under a bar of icon tabs. The Left and Right keys that no page takes switch pages, going
/// round at the ends; so does a tap on a tab. The page that comes up gets the focus.
class ZNavTabWidget : public QWidget
{
    Q_OBJECT

public:
    /// `style`, `buttons` and `closable` select looks of the phone's own bar and are not used.
    ZNavTabWidget(int style, bool buttons, bool closable, QWidget* parent, const char* name,
                  unsigned widgetClass);

    /// Adds a page behind the others and takes ownership of it. The first becomes current.
    void addTab(QWidget* page, const QPixmap& icon, const QString& label);
    /// The index of the page shown, from 0; -1 while there is none.
    int currentPageIndex() const;
    QWidget* currentPage() const;
    /// Shows a page; nothing happens if it is current or does not exist.
    void setCurrentPage(int index);
    int count() const;

signals:
    void currentChanged(QWidget* page);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Bar;
    Bar* bar_;
    QStackedWidget* pages_;
};
