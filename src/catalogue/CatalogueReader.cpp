// XML in, PackageInfoList out. Called for every answer of an update server. A value is looked up from a package
// outwards: each level of the document is read once, over what it inherits from the level around it.
#include "DownloadManager.h"

#include "LogQt.h"
#include "ParseException.h"
#include "XmlTree.h"

#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace qv {

namespace {

/// A QDomNode with the look-ups of an XmlElement, so that one set of rules reads both.
class DomNode
{
public:
    DomNode() = default;
    explicit DomNode(const QDomNode &node) : node(node) { }

    bool isNull() const { return node.isNull(); }
    DomNode parent() const { return DomNode(node.parentNode()); }
    DomNode firstChild(const QString &name) const { return DomNode(node.firstChildElement(name)); }
    DomNode nextSameName() const { return DomNode(node.nextSiblingElement(node.nodeName())); }
    QString text() const { return node.toElement().text(); }
    std::optional<QString> attribute(const QString &name) const
    {
        const QDomElement element = node.toElement();
        return element.hasAttribute(name) ? std::make_optional(element.attribute(name)) : std::nullopt;
    }

private:
    QDomNode node;
};

/// What one level itself says of a value: its first child of that name, or else its attribute.
template<class Element>
std::optional<QString> ownValue(const Element &level, const QString &tag)
{
    const Element child = level.firstChild(tag);
    return child.isNull() ? level.attribute(tag) : child.text();
}

template<class Element>
Element searchStart(const Element &element)
{
    const Element file = element.firstChild(DownloadManager::FILE);
    return file.isNull() ? element : file;
}

template<class Element>
QString valueFrom(Element level, const QString &tag)
{
    for (; !level.isNull(); level = level.parent()) {
        if (const auto value = ownValue(level, tag))
            return *value;
    }
    return QString();
}

/// The value that a look-up from @p element finds, given what the look-up from around it gives.
template<class Element>
QString valueOver(const QString &inherited, const Element &element, const QString &tag)
{
    const Element start = searchStart(element);
    if (const auto value = ownValue(start, tag))
        return *value;
    return ownValue(element, tag).value_or(inherited);
}

template<class Element>
int addOwnWords(const Element &level, const QString &tag, QStringSet &out)
{
    int count = 0;
    const auto add = [&](const QString &text) {
        int words = 0;
        out.unite(StringUtils::splitStringSet(text, StringUtils::splitWords, Qt::SkipEmptyParts, &words));
        count += words;
    };
    for (Element child = level.firstChild(tag); !child.isNull(); child = child.nextSameName())
        add(child.text());
    if (const auto attribute = level.attribute(tag))
        add(*attribute);
    return count;
}

/// How far values that packages share may unfold: without a limit, a small document with large values in its outer
/// sets becomes gigabytes of packages.
class Allowance
{
public:
    static Allowance ofCatalogue() { return Allowance(16 << 20, 16 << 10); }
    static Allowance unlimited()
    {
        return Allowance(std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::max());
    }

    /// For a text that is read anew for a package or a link.
    void spendOn(const QString &text) { take(text.size() <= longestText ? text.size() : left + 1); }

    /// For so many words or links that a level cannot share with the level around.
    void spendOnEntries(qint64 entries) { take(entries * charactersOfEntry); }

private:
    Allowance(qint64 characters, qint64 longestText) : left(characters), longestText(longestText) { }

    void take(qint64 characters)
    {
        left -= characters;
        if (left < 0)
            throw ParseException(QStringLiteral("the catalogue's inherited values unfold to too much"));
    }

    static constexpr qint64 charactersOfEntry = 64;

    qint64 left;
    qint64 longestText;
};

/// @p language and @p url are what a look-up from the level, not from its "file" child, finds.
template<class Element>
int addOwnUrls(const Element &level, const QString &tag, const QString &language, const QString &url,
               Allowance &allowance, UrlMap &out)
{
    int count = 0;
    const auto add = [&](const QString &itsLanguage, const QString &itsUrl) {
        allowance.spendOn(itsUrl);
        out.insert(itsLanguage.isEmpty() ? QStringLiteral("en") : itsLanguage, QUrl(itsUrl));
        ++count;
    };
    // Deliberate: a link without its own language or URL takes those of the package or set around it, unsplit.
    for (Element child = level.firstChild(tag); !child.isNull(); child = child.nextSameName())
        add(valueOver(language, child, DownloadManager::LANGUAGE), valueOver(url, child, DownloadManager::URL));
    if (const auto attribute = level.attribute(tag))
        add(valueOver(language, level, DownloadManager::LANGUAGE), *attribute);
    return count;
}

/// The single values of a package.
enum Value {
    Type,
    Name,
    PublicName,
    Release,
    PublicRelease,
    Status,
    ReleaseDate,
    BaseUrl,
    Url,
    Size,
    Comment,
    Language
};

/// All values of one level of the document, those inherited included. Whatever a level does not change it shares with
/// the level around.
class Level
{
public:
    template<class Element>
    Level over(const Element &element, Allowance &allowance) const
    {
        Level level = *this;
        for (size_t i = 0; i < values.size(); ++i) {
            if (auto value = ownValue(element, *tags()[i]))
                level.values[i] = *value;
        }
        addWords(element, DownloadManager::PLATFORM, level.platforms, allowance);
        addWords(element, DownloadManager::LANGUAGE, level.languages, allowance);
        level.addUrls(element, DownloadManager::RELEASE_NOTES, level.releaseNotes, allowance);
        level.addUrls(element, DownloadManager::README, level.readme, allowance);
        return level;
    }

    void fill(PackageInfo &info, Allowance &allowance) const
    {
        for (const Value value : { ReleaseDate, BaseUrl, Url, Size })
            allowance.spendOn(values[value]);
        info.type = values[Type];
        info.name = values[Name];
        info.publicName = values[PublicName];
        info.platforms = platforms;
        info.release = values[Release];
        info.publicRelease = values[PublicRelease];
        info.status = values[Status];
        info.releaseDate = DownloadManager::parseReleaseDate(values[ReleaseDate]);
        info.url = QUrl(values[BaseUrl] + values[Url]);
        info.languages = languages;
        info.releaseNotes = releaseNotes;
        info.readme = readme;
        info.fileSize = DownloadManager::parseFileSize(values[Size]);
        info.suffix = DownloadManager::parsePackageSuffix(info.url.toString());
        info.comment = values[Comment];
    }

private:
    using Tags = std::array<const QString *, Language + 1>;

    static const Tags &tags()
    {
        using M = DownloadManager;
        static const Tags tags = { &M::TYPE,
                                   &M::NAME,
                                   &M::NAME_PUBLIC,
                                   &M::RELEASE_VERSION,
                                   &M::RELEASE_VERSION_PUBLIC,
                                   &M::RELEASE_STATUS,
                                   &M::RELEASE_DATE,
                                   &M::BASE_URL,
                                   &M::URL,
                                   &M::FILE_SIZE,
                                   &M::COMMENT,
                                   &M::LANGUAGE };
        return tags;
    }

    template<class Element>
    static void addWords(const Element &element, const QString &tag, QStringSet &words, Allowance &allowance)
    {
        QStringSet own;
        addOwnWords(element, tag, own);
        if (!own.isEmpty()) {
            allowance.spendOnEntries(words.size());
            words.unite(own);
        }
    }

    template<class Element>
    void addUrls(const Element &element, const QString &tag, UrlMap &urls, Allowance &allowance) const
    {
        UrlMap own;
        addOwnUrls(element, tag, values[Language], values[Url], allowance, own);
        if (own.isEmpty())
            return;
        allowance.spendOnEntries(own.size() + urls.size());
        // Deliberate: links of the outer levels are inserted last, so that for one language the outermost is found.
        // Backwards, because a multi-map holds the entries of one key in reverse.
        for (auto link = urls.cend(); link != urls.cbegin();) {
            --link;
            own.insert(link.key(), link.value());
        }
        urls = own;
    }

    std::array<QString, Language + 1> values;
    QStringSet platforms;
    QStringSet languages;
    UrlMap releaseNotes;
    UrlMap readme;
};

/// The level of @p element, null for none: read from the document inwards.
template<class Element>
Level levelOf(const Element &element, Allowance &allowance)
{
    std::vector<Element> path;
    for (Element current = element; !current.isNull(); current = current.parent())
        path.push_back(current);
    Level level;
    for (auto current = path.rbegin(); current != path.rend(); ++current)
        level = level.over(*current, allowance);
    return level;
}

template<class Element>
void readPackage(const Element &package, const Level &around, Allowance &allowance, PackageInfo &info)
{
    const Level level = around.over(package, allowance);
    const Element file = package.firstChild(DownloadManager::FILE);
    (file.isNull() ? level : level.over(file, allowance)).fill(info, allowance);
}

/// Appends the packages of @p set, then those of the sets in it. A list instead of recursion: sets nest as deep as the
/// document says.
template<class Element>
void readSet(const Element &set, Allowance &allowance, PackageInfoList &out)
{
    struct Pending
    {
        Element set;
        std::shared_ptr<const Level> around;
    };
    std::vector<Pending> pending;
    if (!set.isNull())
        pending.push_back({ set, std::make_shared<Level>(levelOf(set.parent(), allowance)) });
    while (!pending.empty()) {
        const Pending current = std::move(pending.back());
        pending.pop_back();
        const auto level = std::make_shared<const Level>(current.around->over(current.set, allowance));
        for (Element package = current.set.firstChild(DownloadManager::PACKAGE); !package.isNull();
             package = package.nextSameName()) {
            PackageInfo info;
            readPackage(package, *level, allowance, info);
            out.append(info);
        }
        std::vector<Pending> inner;
        for (Element child = current.set.firstChild(DownloadManager::PACKAGE_SET); !child.isNull();
             child = child.nextSameName())
            inner.push_back({ child, level });
        pending.insert(pending.end(), inner.rbegin(), inner.rend());
    }
}

} // namespace

PackageInfoList DownloadManager::parseXML(QIODevice *device)
{
    try {
        const XmlTree tree(device);
        PackageInfoList packages;
        Allowance allowance = Allowance::ofCatalogue();
        readSet(tree.documentElement(), allowance, packages);
        return packages;
    } catch (const ParseException &) {
        LogQt::write(Log::Warning, QStringLiteral("XML parser error"));
        return PackageInfoList();
    }
}

void DownloadManager::parseSet(const QDomElement &set, PackageInfoList &out)
{
    Allowance allowance = Allowance::unlimited();
    readSet(DomNode(set), allowance, out);
}

void DownloadManager::parsePackage(const QDomElement &package, PackageInfo &info)
{
    Allowance allowance = Allowance::unlimited();
    readPackage(DomNode(package), levelOf(DomNode(package.parentNode()), allowance), allowance, info);
}

QDomNode DownloadManager::startSearchAt(const QDomNode &node)
{
    const QDomElement file = node.firstChildElement(FILE);
    return file.isNull() ? node : file;
}

QString DownloadManager::findString(const QDomNode &node, const QString &tag)
{
    return valueFrom(DomNode(startSearchAt(node)), tag);
}

int DownloadManager::findAllStrings(const QDomNode &node, const QString &tag, QStringSet &out)
{
    int count = 0;
    for (DomNode level(startSearchAt(node)); !level.isNull(); level = level.parent())
        count += addOwnWords(level, tag, out);
    return count;
}

int DownloadManager::findAllTranslatedUrls(const QDomNode &node, const QString &tag, UrlMap &out)
{
    int count = 0;
    Allowance allowance = Allowance::unlimited();
    for (DomNode level(startSearchAt(node)); !level.isNull(); level = level.parent())
        count += addOwnUrls(level, tag, valueFrom(level, LANGUAGE), valueFrom(level, URL), allowance, out);
    return count;
}

} // namespace qv
