#include "platform/zskinservice.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

const QColor Accent(0xff, 0x8a, 0x3d);

ZSkinService::Look lightLook()
{
    return {QColor(0xff, 0xff, 0xff), QColor(0x10, 0x10, 0x10), QColor(0xa0, 0xa0, 0xa0), Accent,
            QColor(0x00, 0x00, 0x00), QColor(0x60, 0x60, 0x60), QColor(0x30, 0x30, 0x30)};
}

ZSkinService::Look darkLook()
{
    return {QColor(0x00, 0x00, 0x00), QColor(0xff, 0xff, 0xff), QColor(0x80, 0x80, 0x80), Accent,
            QColor(0x00, 0x00, 0x00), QColor(0xc0, 0xc0, 0xc0), QColor(0x50, 0x50, 0x50)};
}

ZSkinService::Look tabLook()
{
    ZSkinService::Look look = darkLook();
    look.background = QColor(0x1c, 0x1c, 0x1c);
    look.highlight = QColor(0xff, 0xff, 0xff);
    return look;
}

} // namespace

const ZSkinService::Look& ZSkinService::look(unsigned cls)
{
    static const Look light = lightLook();
    static const Look dark = darkLook();
    static const Look tab = tabLook();
    switch (cls) {
    case clsMainWidget:
    case clsSoftKey:
        return dark;
    case clsNavTab:
        return tab;
    default:
        return light;
    }
}

int ZSkinService::toolkitWeight(int weight)
{
    // The named steps of the old scale and what the toolkit calls the same boldness today.
    static constexpr std::array<std::pair<int, int>, 9> steps{{{0, 100},
                                                               {12, 200},
                                                               {25, 300},
                                                               {50, 400},
                                                               {57, 500},
                                                               {63, 600},
                                                               {75, 700},
                                                               {81, 800},
                                                               {87, 900}}};
    const int clamped = std::clamp(weight, 0, 99);
    for (size_t i = 1; i < steps.size(); ++i) {
        const auto [low, lowWeight] = steps[i - 1];
        const auto [high, highWeight] = steps[i];
        if (clamped <= high)
            return lowWeight + (clamped - low) * (highWeight - lowWeight) / (high - low);
    }
    return 900 + (clamped - 87) * 100 / 12;
}

QFont ZSkinService::font(const QString& family, int points, int weight, bool italic)
{
    QFont font(family);
    font.setPixelSize(std::max(points, 1));
    // Fonts that take the place of this one in other scripts have thin faces, too, which are hard
    // to read at these sizes and lack many a character.
    font.setWeight(static_cast<QFont::Weight>(std::max(toolkitWeight(weight), int(QFont::Normal))));
    font.setItalic(italic);
    return font;
}
