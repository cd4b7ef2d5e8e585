#include "data/CatalogConnection.h"

#include "base/modGeneric.h"
#include "data/ConnectionString.h"
#include "data/Dialect.h"

namespace dax {

namespace {

constexpr TextView separators = u"/\\";

Text Beside(const Text& path, const Text& catalog) {
    const bool isWhole = catalog.find_first_of(separators) == 0 || catalog.find(u':') == 1;
    if (path.empty() || isWhole) return catalog;
    const size_t name = path.find_last_of(separators) + 1, dot = path.rfind(u'.');
    const bool hasEnding = dot != Text::npos && dot > name;
    return path.substr(0, name) + catalog + (hasEnding && catalog.find(u'.') == Text::npos ? path.substr(dot) : Text());
}

// One value in place of all that the keywords mean.
void Replace(ConnectionKeywords& keywords, std::initializer_list<TextView> meanings, TextView keyword,
             const Text& value) {
    for (const TextView meaning : meanings) keywords.Remove(meaning);
    if (!value.empty()) keywords.Set(keyword, value);
}

} // namespace

Text CatalogConnection(const Text& connector, const Text& catalog, const Text& login, const Text& password) {
    if (connector.find(u'=') == Text::npos || modGeneric::FileExists(connector)) return Beside(connector, catalog);
    ConnectionKeywords keywords(connector);
    const Text provider = LowerAscii(keywords.Last({u"Provider"}));
    if (provider.starts_with(u"microsoft.jet.oledb") || provider.starts_with(u"microsoft.ace.oledb")) {
        const Text path = Beside(keywords.Last({u"Data Source", u"DBQ"}), catalog);
        Replace(keywords, {u"DBQ"}, u"Data Source", path);
        return keywords.Write();
    }
    const bool isProvider = !provider.empty() && !provider.starts_with(u"msdasql");
    if (!isProvider) keywords = WithExtendedProperties(keywords);
    const Engine engine = EngineFromName(keywords.Last({u"Driver"}));
    if (engine == Engine::SQLite) {
        keywords.Set(u"Database", Beside(keywords.Last({u"Database"}), catalog));
        return keywords.Write();
    }
    Replace(keywords, {u"Initial Catalog", u"Database"}, isProvider ? u"Initial Catalog" : u"Database", catalog);
    if (!login.empty()) {
        Replace(keywords, {u"User ID", u"UID", u"User", u"Username"}, isProvider ? u"User ID" : u"UID", login);
        Replace(keywords, {u"Password", u"PWD"}, isProvider ? u"Password" : u"PWD", password);
        for (const TextView account : {u"Integrated Security", u"Trusted_Connection"}) keywords.Remove(account);
    }
    return keywords.Write();
}

} // namespace dax
