#include "widgets/markup.h"

#include <QColor>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace
{

constexpr double sizeStep = 1.2;

/// What is drawn between a tag and its end.
struct style {
    QTextCharFormat format;
    double size = 1; ///< relative to the text's
};

/// A factor for "small", "150%" and the like, by the size around it for "smaller" and "larger".
std::optional<double> sizeOf(const QString &value, const QFont &font, double around)
{
    static constexpr std::array names{"xx-small", "x-small", "small",   "medium",
                                      "large",    "x-large", "xx-large"};
    constexpr int medium = 3;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (value == QLatin1String(names[i]))
            return std::pow(sizeStep, static_cast<int>(i) - medium);
    }
    if (value == QLatin1String("larger"))
        return around * sizeStep;
    if (value == QLatin1String("smaller"))
        return around / sizeStep;
    const auto number = [&value](int suffix) { return value.chopped(suffix).toDouble(); };
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * 0.75;
    double factor = 0;
    if (value.endsWith(u'%'))
        factor = number(1) / 100;
    else if (value.endsWith(QLatin1String("pt")))
        factor = number(2) / points;
    else
        factor = number(0) / 1024 / points;
    if (!(factor > 0))
        return std::nullopt;
    return factor;
}

std::optional<int> weightOf(const QString &value)
{
    static constexpr std::pair<const char *, int> names[] = {
        {"thin", 100},     {"ultralight", 200}, {"light", 300},     {"normal", 400}, {"medium", 500},
        {"semibold", 600}, {"bold", 700},       {"ultrabold", 800}, {"heavy", 900},
    };
    for (const auto &[name, weight] : names) {
        if (value == QLatin1String(name))
            return weight;
    }
    const int number = value.toInt();
    return number > 0 ? std::optional(std::clamp(number, 1, 1000)) : std::nullopt;
}

/// "Sans Bold Italic 12": any of them may be missing.
void takeDescription(style &now, const QString &value, const QFont &font)
{
    QStringList family;
    for (const QString &word : value.split(u' ', Qt::SkipEmptyParts)) {
        const QString name = word.toLower();
        if (bool isNumber = false; word.toDouble(&isNumber) > 0 && isNumber)
            now.size = sizeOf(word + QStringLiteral("pt"), font, now.size).value_or(now.size);
        else if (name == QLatin1String("italic") || name == QLatin1String("oblique"))
            now.format.setFontItalic(true);
        else if (const auto weight = weightOf(name))
            now.format.setFontWeight(*weight);
        else
            family << word;
    }
    if (!family.isEmpty())
        now.format.setFontFamilies({family.join(u' ')});
}

void takeAttribute(style &now, const QString &name, const QString &value, const QFont &font)
{
    const auto is = [&name](auto... names) { return ((name == QLatin1String(names)) || ...); };
    const QColor color = QColor::fromString(value);
    if (is("font", "font_desc"))
        takeDescription(now, value, font);
    else if (is("face", "font_family"))
        now.format.setFontFamilies({value});
    else if (is("size", "font_size"))
        now.size = sizeOf(value, font, now.size).value_or(now.size);
    else if (is("weight", "font_weight"))
        now.format.setFontWeight(weightOf(value.toLower()).value_or(QFont::Normal));
    else if (is("style", "font_style"))
        now.format.setFontItalic(value != QLatin1String("normal"));
    else if (is("foreground", "fgcolor", "color") && color.isValid())
        now.format.setForeground(color);
    else if (is("background", "bgcolor") && color.isValid())
        now.format.setBackground(color);
    else if (is("underline"))
        now.format.setFontUnderline(value != QLatin1String("none"));
    else if (is("strikethrough"))
        now.format.setFontStrikeOut(value == QLatin1String("true"));
}

/// False for an unknown tag.
bool takeTag(style &now, const QXmlStreamReader &reader, const QFont &font)
{
    const auto name = reader.name();
    if (name == u"b")
        now.format.setFontWeight(QFont::Bold);
    else if (name == u"i")
        now.format.setFontItalic(true);
    else if (name == u"u")
        now.format.setFontUnderline(true);
    else if (name == u"s")
        now.format.setFontStrikeOut(true);
    else if (name == u"tt")
        now.format.setFontFamilies({QStringLiteral("monospace")});
    else if (name == u"small")
        now.size /= sizeStep;
    else if (name == u"big")
        now.size *= sizeStep;
    else if (name == u"sub")
        now.format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    else if (name == u"sup")
        now.format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    else if (name == u"span") {
        for (const QXmlStreamAttribute &attribute : reader.attributes())
            takeAttribute(now, attribute.name().toString(), attribute.value().toString(), font);
    } else
        return name == u"a" || name == u"markup";
    return true;
}

/// The style as a format, its size within what can be read.
QTextCharFormat drawn(const style &now, const QFont &font)
{
    QTextCharFormat format = now.format;
    const double factor = std::clamp(now.size, 0.4, 4.0);
    if (factor == 1)
        return format;
    if (font.pointSizeF() > 0)
        format.setFontPointSize(font.pointSizeF() * factor);
    else
        format.setProperty(QTextFormat::FontPixelSize, std::max(1, qRound(font.pixelSize() * factor)));
    return format;
}

} // namespace

styledText fromMarkup(const QString &markup, const QFont &font)
{
    constexpr std::size_t deepest = 64;
    const styledText asItStands{markup, {}};
    QXmlStreamReader reader(QStringLiteral("<markup>%1</markup>").arg(markup));
    reader.setNamespaceProcessing(false);
    styledText result;
    std::vector<style> styles(1);
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            styles.push_back(styles.back());
            if (styles.size() > deepest || !takeTag(styles.back(), reader, font))
                return asItStands;
        } else if (token == QXmlStreamReader::EndElement) {
            styles.pop_back();
        } else if (token == QXmlStreamReader::Characters) {
            const auto start = static_cast<int>(result.text.size());
            result.text += reader.text();
            if (const QTextCharFormat format = drawn(styles.back(), font); !format.isEmpty())
                result.formats.append({start, static_cast<int>(reader.text().size()), format});
        } else if (token != QXmlStreamReader::StartDocument && token != QXmlStreamReader::EndDocument)
            return asItStands;
    }
    return result;
}
