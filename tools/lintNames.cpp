// What a catalogue says where nobody reads it: names that no client knows, and known ones in the wrong place; and links
// that lead nowhere. Called by "lint".
#include "CatalogueReader.h"
#include "Kinds.h"
#include "Report.h"

#include <QMap>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace qv {

namespace {

/// What clients take an element for, by its name and what it stands in.
enum class Role { Document, Root, Set, Package, File, Link, Value, Unread };

/// What is read in an element of one role.
struct Known
{
    QStringList children;
    QStringList attributes;
};

const Known &knownIn(Role role)
{
    static const QStringList values { Word::type,    Word::name,          Word::publicName, Word::language,
                                      Word::release, Word::publicRelease, Word::status,     Word::releaseDate,
                                      Word::url,     Word::baseUrl,       Word::fileSize,   Word::platform,
                                      Word::comment, Word::releaseNotes,  Word::readme };
    static const QStringList ofSet = values + QStringList { Word::packageSet, Word::package };
    static const QStringList ofFile = values + QStringList { Word::sha256 };
    static const QStringList ofLink { Word::language, Word::url };
    static const QMap<Role, Known> known {
        { Role::Root, { ofSet, values + QStringList { Word::serial, Word::expires } } },
        { Role::Set, { ofSet, values } },
        { Role::Package, { ofFile + QStringList { Word::file }, ofFile } },
        { Role::File, { ofFile, ofFile } },
        { Role::Link, { ofLink, ofLink } },
    };
    static const Known nothing;
    const auto found = known.constFind(role);
    return found == known.cend() ? nothing : *found;
}

Role roleOf(const QString &name, Role around)
{
    if (around == Role::Document)
        return Role::Root;
    if (!knownIn(around).children.contains(name))
        return Role::Unread;
    if (name == Word::packageSet)
        return Role::Set;
    if (name == Word::package)
        return Role::Package;
    if (name == Word::file)
        return Role::File;
    return name == Word::releaseNotes || name == Word::readme ? Role::Link : Role::Value;
}

/// How many letters must be added, removed or changed to make one text of the other.
int distance(const QString &a, const QString &b)
{
    std::vector<int> row(size_t(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row.front();
        row.front() = i + 1;
        for (size_t j = 1; j < row.size(); ++j) {
            const int changed = diagonal + (a.at(i) == b.at(int(j) - 1) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({ changed, diagonal + 1, row[j - 1] + 1 });
        }
    }
    return row.back();
}

/// The known word that was meant, in whatever case; empty where none is near.
QString likely(const QString &name, const QStringList &words)
{
    QString best;
    int least = std::min(3, int(name.size() + 2) / 2);
    for (const QString &word : words) {
        if (std::abs(int(name.size() - word.size())) >= least)
            continue;
        if (const int letters = distance(name.toLower(), word); letters < least) {
            least = letters;
            best = word;
        }
    }
    return best;
}

/// A name that nobody reads, where it stands first.
struct UnreadName
{
    const MarkupElement *element;
    Role around;
    QString place;
    QString name;
    bool isAttribute;
    int count;
};

void tell(Report &report, const UnreadName &unread)
{
    const bool isHash = unread.name == Word::sha256;
    const Known &known = knownIn(unread.around);
    const QString meant = likely(unread.name, unread.isAttribute ? known.attributes : known.children);
    QString what = QStringLiteral("nobody reads the %1 %2 of %3")
                       .arg(QLatin1String(unread.isAttribute ? "attribute" : "element"), quoted(unread.name),
                            quoted(unread.place));
    if (unread.count > 1)
        what += QStringLiteral(", which stands there %1 times").arg(unread.count);
    report.tell(*unread.element, isHash ? "sha256" : "name", what,
                isHash                ? QStringLiteral("the hash of a file stands in its package or \"file\"")
                    : meant.isEmpty() ? QStringLiteral("its value counts for nothing")
                                      : QStringLiteral("did you mean %1?").arg(quoted(meant)));
}

/// Each name is told once for the elements in which it stands, however often.
void checkUnread(Report &report)
{
    QList<UnreadName> unread;
    QHash<QString, int> known; // which of them, by place and name
    const auto note = [&](const MarkupElement &element, const MarkupElement &around, Role role, const QString &name,
                          bool isAttribute) {
        const QString place = QString::fromUtf8(around.name.data(), int(around.name.size()));
        const QString key = place + QLatin1Char(isAttribute ? '=' : '<') + name;
        if (!known.contains(key)) {
            known.insert(key, int(unread.size()));
            unread.append({ &element, role, place, name, isAttribute, 0 });
        }
        ++unread[known.value(key)].count;
    };

    const auto &markup = report.catalogue.markup;
    std::vector<Role> roles { Role::Document };
    for (size_t i = 1; i < markup.size(); ++i) {
        const MarkupElement &element = markup[i];
        const MarkupElement &around = markup[size_t(element.parent)];
        const Role roleAround = roles[size_t(element.parent)];
        const QString name = QString::fromUtf8(element.name.data(), int(element.name.size()));
        const Role role = roleOf(name, roleAround);
        roles.push_back(role);
        if (role == Role::Unread) {
            if (roleAround != Role::Unread && roleAround != Role::Value)
                note(element, around, roleAround, name, false);
            continue;
        }
        for (const auto &attribute : element.attributes) {
            const QString word = QString::fromUtf8(attribute.name.data(), int(attribute.name.size()));
            const bool isOfXml = word.contains(QLatin1Char(':')) || word == QLatin1String("xmlns");
            if (!isOfXml && !knownIn(role).attributes.contains(word))
                note(element, element, role, word, true);
        }
    }
    for (const UnreadName &name : std::as_const(unread))
        tell(report, name);
}

void checkLink(Report &report, const XmlElement &link, const QString &word, const QString &text)
{
    const QUrl url(text);
    static const QStringList schemes { QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("ftp") };
    if (schemes.contains(url.scheme()) && !url.host().isEmpty())
        return;
    report.tell(report.catalogue.markupOf(link), "notes",
                word + QStringLiteral(" is no whole address: ") + quoted(text),
                QStringLiteral("base-url is not put before links, and clients open http, https and ftp alone"));
}

/// Each link once, however many packages inherit it.
void checkLinks(Report &report)
{
    QSet<int> seen;
    for (const XmlElement &package : report.catalogue.elements) {
        const XmlElement file = package.firstChild(Word::file);
        for (XmlElement level = file.isNull() ? package : file; !level.isNull() && !seen.contains(level.index());
             level = level.parent()) {
            seen.insert(level.index());
            for (const QString &word : { Word::releaseNotes, Word::readme }) {
                for (XmlElement link = level.firstChild(word); !link.isNull(); link = link.nextSameName())
                    checkLink(report, link, word, ownValue(link, Word::url).value_or(written(level, Word::url).text));
                if (const auto attribute = level.attribute(word))
                    checkLink(report, level, word, *attribute);
            }
        }
    }
}

} // namespace

void checkNames(Report &report)
{
    checkUnread(report);
    checkLinks(report);
}

} // namespace qv
