#include "server/boxText.h"

#include <QFileInfo>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>

#include <algorithm>

namespace
{

constexpr qsizetype longestText = 10'000;
constexpr int deepestTable = 4;
constexpr qint64 largestFile = 16 * 1024 * 1024;

/// Reads rich text without opening what it refers to.
class textReader : public QTextDocument
{
public:
    explicit textReader(const QString &text) { setHtml(text); }

    bool isHarmless() const { return m_namesFiles && opensFilesOnly() && tableDepth(rootFrame()) <= deepestTable; }

protected:
    /// Style sheets are asked for while the text is read.
    QVariant loadResource(int, const QUrl &name) override
    {
        m_namesFiles = m_namesFiles && mayOpen(name.toString());
        return QString();
    }

private:
    bool opensFilesOnly() const;
    static bool mayOpen(const QString &name);
    static int tableDepth(const QTextFrame *frame);

    bool m_namesFiles = true;
};

bool textReader::opensFilesOnly() const
{
    const QList<QTextFormat> formats = allFormats();
    return std::all_of(formats.begin(), formats.end(), [](const QTextFormat &format) {
        return mayOpen(format.stringProperty(QTextFormat::ImageName)) &&
               mayOpen(format.stringProperty(QTextFormat::BackgroundImageUrl));
    });
}

/// What does not exist is not opened either. A name is tried as an address and as a path.
bool textReader::mayOpen(const QString &name)
{
    const auto isSmallFile = [](const QString &path) {
        const QFileInfo file(path);
        return path.isEmpty() || !file.exists() || (file.isFile() && file.size() <= largestFile);
    };
    return isSmallFile(name) && isSmallFile(QUrl(name).toLocalFile());
}

int textReader::tableDepth(const QTextFrame *frame)
{
    int depth = 0;
    for (const QTextFrame *child : frame->childFrames())
        depth = std::max(depth, tableDepth(child));
    return depth + (qobject_cast<const QTextTable *>(frame) ? 1 : 0);
}

} // namespace

QString boxText(const QString &text)
{
    return text.size() <= longestText ? text : text.left(longestText) + QStringLiteral("...");
}

Qt::TextFormat boxTextFormat(const QString &text)
{
    return Qt::mightBeRichText(text) && textReader(text).isHarmless() ? Qt::RichText : Qt::PlainText;
}
