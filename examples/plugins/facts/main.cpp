// Facts, a plugin with a window: tells how many bytes, lines and words a file has.

#include "files/paths.h"
#include "platform/zlistbox.h"
#include "platform/zskinservice.h"
#include "plugins/support/pluginapp.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"
#include "plugins/support/regularopen.h"

#include <QFile>
#include <QVBoxLayout>

#include <cctype>

namespace
{

struct Facts {
    qint64 bytes = 0;
    qint64 lines = 0;
    qint64 words = 0;
};

Facts factsOf(QFile& file)
{
    constexpr qint64 Block = 65536;
    Facts facts;
    bool isInWord = false;
    for (QByteArray block = file.read(Block); !block.isEmpty(); block = file.read(Block)) {
        facts.bytes += block.size();
        for (const char c : block) {
            const bool isBlank = std::isspace(static_cast<unsigned char>(c)) != 0;
            facts.lines += c == '\n' ? 1 : 0;
            facts.words += isInWord || isBlank ? 0 : 1;
            isInWord = !isBlank;
        }
    }
    return facts;
}

class FactsWindow : public PluginWindow
{
public:
    explicit FactsWindow(const QString& file)
        : PluginWindow(QStringLiteral("Facts")),
          file_(file),
          list_(new ZListBox(QStringLiteral("%M"), this, 0, ZSkinService::clsListBox))
    {
        list_->setItemFont(2, font(), false);
        list_->setItemFont(2, font(), true);
        contentLayout()->addWidget(list_);
        setSoftKeyTexts(pluginTexts().again, pluginTexts().exit);
        showTitle(file.isEmpty() ? QStringLiteral("Facts") : lastPart(file), QString());
        list_->setFocus();
        read();
    }

protected:
    void leftSoftKey() override { read(); }

    /// What the list does not use comes here.
    void keyPressed(int code) override
    {
        if (code == '5')
            read();
        else
            PluginWindow::keyPressed(code);
    }

private:
    void read()
    {
        list_->clear();
        QFile file;
        QString problem;
        if (!openWithProblem(file, file_, problem)) {
            list_->setEmptyText(problem);
            return;
        }
        const Facts facts = factsOf(file);
        addRow(QStringLiteral("Bytes: %1").arg(facts.bytes));
        addRow(QStringLiteral("Lines: %1").arg(facts.lines));
        addRow(QStringLiteral("Words: %1").arg(facts.words));
        list_->setCurrentItem(0);
    }

    void addRow(const QString& text)
    {
        auto* row = new ZListBoxItem(list_, QStringLiteral("%M"));
        row->appendSubItem(1, text, false);
        list_->insertItem(row);
    }

    const QString file_;
    ZListBox* list_;
};

} // namespace

int main(int argc, char** argv)
{
    PluginApp app(argc, argv, QStringLiteral("Facts"));
    FactsWindow window(app.file());
    return app.run(window);
}
