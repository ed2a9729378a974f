// XML in, PackageInfoList out. Called for every answer of an update server. A value is looked up from a package
// outwards: each level of the document is read once, over what it inherits from the level around it.
#include "CatalogueReader.h"

#include "Allowance.h"
#include "CatalogueValues.h"
#include "Kinds.h"
#include "LogQt.h"
#include "ParseException.h"
#include "XmlTree.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
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

/// All that one level itself says of it: its children of that name, then its attribute.
template<class Element, class Function>
void forEachOwn(const Element &level, const QString &word, Function take)
{
    for (Element child = level.firstChild(word); !child.isNull(); child = child.nextSameName())
        take(child.text());
    if (const auto attribute = level.attribute(word))
        take(*attribute);
}

template<class Element>
Element startOf(const Element &element)
{
    const Element file = element.firstChild(Word::file);
    return file.isNull() ? element : file;
}

template<class Element>
QString valueFrom(Element level, const QString &word)
{
    for (; !level.isNull(); level = level.parent()) {
        if (const auto value = ownValue(level, word))
            return *value;
    }
    return QString();
}

/// The value that a look-up from @p element finds, given what the look-up from around it gives.
template<class Element>
QString valueOver(const QString &inherited, const Element &element, const QString &word)
{
    const Element start = startOf(element);
    if (const auto value = ownValue(start, word))
        return *value;
    return ownValue(element, word).value_or(inherited);
}

/// @p language and @p url are what a look-up from the level, not from its "file" child, finds.
template<class Element>
int addOwnUrls(const Element &level, const QString &word, const QString &language, const QString &url,
               Allowance &allowance, UrlMap &out)
{
    int count = 0;
    const auto add = [&](const QString &itsLanguage, const QString &itsUrl) {
        allowance.checkLength(itsUrl, longestUrl);
        allowance.checkLength(itsLanguage, longestText);
        allowance.spendOnUrl(itsUrl.size());
        out.insert(itsLanguage.isEmpty() ? defaultLanguage : itsLanguage, QUrl(itsUrl));
        ++count;
    };
    // Deliberate: a link without its own language or URL takes those of the package or set around it, unsplit.
    for (Element child = level.firstChild(word); !child.isNull(); child = child.nextSameName())
        add(valueOver(language, child, Word::language), valueOver(url, child, Word::url));
    if (const auto attribute = level.attribute(word))
        add(valueOver(language, level, Word::language), *attribute);
    return count;
}

int shownSize(const QString &text)
{
    return int(visible(text).size());
}

/// Of a version, beside its size: to put thousands of long ones into an order takes seconds.
int costOfComparing(const QString &release)
{
    constexpr int usual = 128, factor = 8;
    return std::max(int(release.size()) - usual, 0) * factor;
}

struct Words
{
    QStringSet set;
    int characters = 0; // of them all, as they are shown
};

/// Sets of words that equal levels inside one set share, or all that inherit none: by what they say themselves.
using Unions = QHash<QString, Words>;

/// All values of one level of the document, those inherited included. Whatever a level does not change it shares with
/// the level around; what its neighbour inside the same set says too, with that.
class Level
{
public:
    Level() : Level(std::make_shared<Unions>()) { }

    template<class Element>
    Level over(const Element &element, Allowance &allowance) const;

    /// Takes what @p element says; its neighbours inside @p around share with it.
    template<class Element>
    void add(const Element &element, const Level &around, Allowance &allowance);

    /// The package, when all its levels have been read.
    PackageInfo finished(Allowance &allowance) &&;

    /// Forgets what neighbours share: no more packages stand at this level.
    void close() { platformUnions = languageUnions = Unions(); }

private:
    explicit Level(const std::shared_ptr<Unions> &firstUnions) : firstUnions(firstUnions) { }

    static constexpr size_t fieldCount = 12;

    /// What a single value fills. One line for each.
    struct Field
    {
        const QString &word;
        int longest;
        void (*fill)(Level &level, const QString &text);
    };
    static const std::array<Field, fieldCount> fields;

    template<class Element>
    static void addWords(const Element &element, const QString &word, Unions &unions, Allowance &allowance,
                         Words &words);
    template<class Element>
    void addUrls(const Element &element, const QString &word, Allowance &allowance, UrlMap &urls) const;

    PackageInfo package;
    QString baseUrl;
    QString url;
    QString language; // raw
    Words platforms;
    Words languages;
    mutable std::array<QString, fieldCount> neighbours; // what the last one inside said of each field
    mutable Unions platformUnions;
    mutable Unions languageUnions;
    std::shared_ptr<Unions> firstUnions; // of all levels that inherit none
};

const std::array<Level::Field, Level::fieldCount> Level::fields { {
    { Word::type, longestText, [](Level &level, const QString &text) { level.package.type = text; } },
    { Word::name, longestText, [](Level &level, const QString &text) { level.package.name = text; } },
    { Word::publicName, longestText, [](Level &level, const QString &text) { level.package.publicName = text; } },
    { Word::release, longestText, [](Level &level, const QString &text) { level.package.release = text; } },
    { Word::publicRelease, longestText, [](Level &level, const QString &text) { level.package.publicRelease = text; } },
    { Word::status, longestText, [](Level &level, const QString &text) { level.package.status = text; } },
    { Word::releaseDate, longestText,
      [](Level &level, const QString &text) { level.package.releaseDate = parseReleaseDate(text); } },
    { Word::baseUrl, longestUrl, [](Level &level, const QString &text) { level.baseUrl = text; } },
    { Word::url, longestUrl, [](Level &level, const QString &text) { level.url = text; } },
    { Word::fileSize, longestText,
      [](Level &level, const QString &text) { level.package.fileSize = parseFileSize(text); } },
    { Word::comment, longestComment, [](Level &level, const QString &text) { level.package.comment = text; } },
    { Word::language, longestWords, [](Level &level, const QString &text) { level.language = text; } },
} };

template<class Element>
Level Level::over(const Element &element, Allowance &allowance) const
{
    Level level(firstUnions);
    level.package = package;
    level.baseUrl = baseUrl;
    level.url = url;
    level.language = language;
    level.platforms = platforms;
    level.languages = languages;
    level.add(element, *this, allowance);
    return level;
}

template<class Element>
void Level::add(const Element &element, const Level &around, Allowance &allowance)
{
    for (size_t i = 0; i < fields.size(); ++i) {
        const auto value = ownValue(element, fields[i].word);
        if (!value)
            continue;
        allowance.checkLength(*value, fields[i].longest);
        if (around.neighbours[i] != *value)
            around.neighbours[i] = *value;
        fields[i].fill(*this, around.neighbours[i]);
    }
    addWords(element, Word::platform, platforms.set.isEmpty() ? *firstUnions : around.platformUnions, allowance,
             platforms);
    addWords(element, Word::language, languages.set.isEmpty() ? *firstUnions : around.languageUnions, allowance,
             languages);
    addUrls(element, Word::releaseNotes, allowance, package.releaseNotes);
    addUrls(element, Word::readme, allowance, package.readme);
}

template<class Element>
void Level::addWords(const Element &element, const QString &word, Unions &unions, Allowance &allowance, Words &words)
{
    QString own;
    forEachOwn(element, word,
               [&own](const QString &text) { own = own.isEmpty() ? text : own + QLatin1Char(' ') + text; });
    if (std::all_of(own.cbegin(), own.cend(), [](QChar c) { return c.isSpace(); }))
        return;
    allowance.checkLength(own, longestWords);
    auto known = unions.constFind(own);
    if (known == unions.cend()) {
        Words united { StringUtils::splitStringSet(own, StringUtils::splitWords, Qt::SkipEmptyParts) };
        for (const QString &one : std::as_const(united.set))
            allowance.checkLength(one, longestText);
        const auto ownCount = united.set.size();
        united.set.unite(words.set);
        for (const QString &one : std::as_const(united.set))
            united.characters += shownSize(one) + 2; // and what stands between them
        allowance.spendOnWords(united.set.size(), ownCount);
        known = unions.insert(own, united);
    }
    words = *known;
}

template<class Element>
void Level::addUrls(const Element &element, const QString &word, Allowance &allowance, UrlMap &urls) const
{
    UrlMap own;
    addOwnUrls(element, word, language, url, allowance, own);
    if (own.isEmpty())
        return;
    allowance.spendOnLinks(own.size() + urls.size());
    // Deliberate: links of the outer levels are inserted last, so that for one language the outermost is found.
    // Backwards, because a multi-map holds the entries of one key in reverse.
    for (auto link = urls.cend(); link != urls.cbegin();) {
        --link;
        own.insert(link.key(), link.value());
    }
    urls = own;
}

PackageInfo Level::finished(Allowance &allowance) &&
{
    allowance.spendOnUrl(baseUrl.size() + url.size());
    PackageInfo whole = std::move(package);
    whole.platforms = platforms.set;
    whole.languages = languages.set;
    allowance.spendOnReading(shownSize(whole.name) + shownSize(whole.publicName) + shownSize(whole.release)
                             + shownSize(whole.publicRelease) + platforms.characters + languages.characters
                             + costOfComparing(whole.release));
    whole.url = QUrl(baseUrl + url);
    const QString address = whole.url.toString();
    whole.suffix = packageSuffix(address);
    if (isSuspiciousSuffix(whole.suffix) && allowance.suspiciousSuffixes.hasRoom())
        parsePackageSuffix(address); // which tells the log
    return whole;
}

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
PackageInfo packageOver(const Level &around, const Element &package, Allowance &allowance)
{
    Level level = around.over(package, allowance);
    const Element file = package.firstChild(Word::file);
    if (!file.isNull())
        level.add(file, level, allowance);
    PackageInfo whole = std::move(level).finished(allowance);
    const QString hash =
        valueOver(QString(), package, Word::sha256); // not from the sets around: it is that of one file
    allowance.checkLength(hash, longestText);
    whole.sha256 = hash.toLower().toUtf8();
    return whole;
}

/// Appends the packages of @p set, then those of the sets in it. A list instead of recursion: sets nest as deep as the
/// document says.
template<class Element>
void appendPackages(const Element &set, Allowance &allowance, PackageInfoList &out)
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
        const auto level = std::make_shared<Level>(current.around->over(current.set, allowance));
        for (Element package = current.set.firstChild(Word::package); !package.isNull();
             package = package.nextSameName())
            out.append(packageOver(*level, package, allowance));
        level->close();
        std::vector<Pending> inner;
        for (Element child = current.set.firstChild(Word::packageSet); !child.isNull(); child = child.nextSameName())
            inner.push_back({ child, level });
        pending.insert(pending.end(), inner.rbegin(), inner.rend());
    }
}

} // namespace

PackageInfoList parseCatalogue(QIODevice *device)
{
    const XmlTree tree(device);
    Allowance allowance = Allowance::ofCatalogue();
    allowance.checkPackages(tree.count(Word::package));
    PackageInfoList packages;
    packages.reserve(tree.count(Word::package));
    appendPackages(tree.documentElement(), allowance, packages);
    return packages;
}

PackageInfoList readCatalogue(QIODevice *device)
{
    try {
        return parseCatalogue(device);
    } catch (const ParseException &) {
        LogQt::write(Log::Warning, QStringLiteral("XML parser error"));
        return PackageInfoList();
    }
}

void readSet(const QDomElement &set, PackageInfoList &out)
{
    Allowance allowance = Allowance::unlimited();
    appendPackages(DomNode(set), allowance, out);
}

void readPackage(const QDomElement &package, PackageInfo &info)
{
    Allowance allowance = Allowance::unlimited();
    PackageInfo read = packageOver(levelOf(DomNode(package.parentNode()), allowance), DomNode(package), allowance);
    read.flags = info.flags;
    read.localFile = info.localFile;
    read.spareFlag = info.spareFlag;
    info = read;
}

QDomNode searchStart(const QDomNode &node)
{
    const QDomElement file = node.firstChildElement(Word::file);
    return file.isNull() ? node : file;
}

QString findString(const QDomNode &node, const QString &word)
{
    return valueFrom(DomNode(searchStart(node)), word);
}

int findAllStrings(const QDomNode &node, const QString &word, QStringSet &out)
{
    int count = 0;
    for (DomNode level(searchStart(node)); !level.isNull(); level = level.parent()) {
        forEachOwn(level, word, [&](const QString &text) {
            int words = 0;
            out.unite(StringUtils::splitStringSet(text, StringUtils::splitWords, Qt::SkipEmptyParts, &words));
            count += words;
        });
    }
    return count;
}

int findAllTranslatedUrls(const QDomNode &node, const QString &word, UrlMap &out)
{
    int count = 0;
    Allowance allowance = Allowance::unlimited();
    for (DomNode level(searchStart(node)); !level.isNull(); level = level.parent())
        count += addOwnUrls(level, word, valueFrom(level, Word::language), valueFrom(level, Word::url), allowance, out);
    return count;
}

} // namespace qv
