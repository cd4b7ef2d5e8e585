// Passwords in texts of every form.
#include "base/Secrets.h"
#include "base/Error.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

TEST(SecretsTest, MasksEveryPasswordAndNothingElse) {
    const struct {
        Text text, masked, passwords; // the passwords apart by '|'
    } cases[] = {
        {u"", u"", u""},
        {u"Driver={A};UID=me;Server=h", u"Driver={A};UID=me;Server=h", u""},
        {u"UID=u;PWD=geheim;X=y", u"UID=u;PWD=••••;X=y", u"geheim"},
        {u"pwd = a b ", u"pwd = •••• ", u"a b"},
        {u"Jet OLEDB:Database Password=a'b", u"Jet OLEDB:Database Password=••••", u"a'b"},
        {u"xPwD={x;}}y};UID=me", u"xPwD=••••;UID=me", u"x;}y"},
        {u"Password=\"a\"\"b;c\";d", u"Password=••••;d", u"a\"b;c"},
        {u"Password='';UID=x", u"Password=••••;UID=x", u""},
        {u"PWD='never ends; at all", u"PWD=••••", u"never ends; at all"},
        {u"Extended Properties='UID=u;PWD=''a;b''';C=d", u"Extended Properties='UID=u;PWD=••••';C=d", u"a;b"},
        {u"Extended Properties=\"DSN=d;PWD={a;b}\"", u"Extended Properties=\"DSN=d;PWD=••••\"", u"a;b"},
        {u"/x.db;PWD=geheim\nsecond line", u"/x.db;PWD=••••\nsecond line", u"geheim"},
        {u"postgresql://u:p@ss:w@h:5432/db", u"postgresql://u:••••@h:5432/db", u"p@ss:w"},
        {u"see x://u:p@h and y://v:q@i", u"see x://u:••••@h and y://v:••••@i", u"p|q"},
        {u"://u:p@h", u"://u:••••@h", u"p"},
        {u"x://u:p@h\nv@w", u"x://u:••••@h\nv@w", u"p"},
        {u"x://h/, =://u:p@h", u"x://h/, =://u:••••@h", u"p"},
        {u"http://h:80/a, http://u@h:80/", u"http://h:80/a, http://u@h:80/", u""},
        {u"m://h/d?user=u&password=p", u"m://h/d?user=u&password=••••", u"p"},
        {u"Use \"UID=…;PWD=…\" here", u"Use \"UID=…;PWD=…\" here", u""},
        {u"PWD=…;x", u"PWD=…;x", u""},
        {u"pwd=a\rb;PWD='", u"pwd=••••\rb;PWD=••••", u"a"},
        {u"X;Password=''", u"X;Password=••••", u""},
        {u"PWD=''abc", u"PWD=••••", u"abc"},
        {u"'PWD=''a;b'';X=y'", u"'PWD=••••;X=y'", u"a;b"},
        {u"PWD=pwd=a;x", u"PWD=••••;x", u"pwd=a"},
        {u"PWD=\"a\"", u"PWD=••••", u"a"},
        {u"PWD={a}bc;d;PWD=", u"PWD=••••;d;PWD=", u"a"},
        {u"'x;PWD=••••' is gone", u"'x;PWD=••••' is gone", u""},
    };
    for (const auto& [text, masked, passwords] : cases) {
        EXPECT_EQ(ToUtf8(MaskPasswords(text)), ToUtf8(masked));
        Text found;
        for (const Text& password : PasswordsIn(text)) found += (found.empty() ? u"" : u"|") + password;
        EXPECT_EQ(ToUtf8(found), ToUtf8(passwords)) << ToUtf8(text);
        EXPECT_EQ(ToUtf8(Error(1, text).Description()), ToUtf8(masked));
    }
    // Messages of drivers without the keyword: a short password only where it is a word of its own.
    const Text known[] = {u"ab", u"", u"geheim", u"four"};
    EXPECT_EQ(ToUtf8(MaskPasswords(u"\"geheim2\" of ab, not abc or cab", known)), "\"••••2\" of ••••, not abc or cab");
    EXPECT_EQ(ToUtf8(MaskPasswords(u"ab, nfours, ab", known)), "••••, n••••s, ••••");
    EXPECT_EQ(ToUtf8(MaskPasswords(u"cab, abc", known)), "cab, abc");
}

} // namespace
} // namespace dax
