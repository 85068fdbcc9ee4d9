#include "platform/RegFileParser.h"

#include <gtest/gtest.h>

#include "support/TestFiles.h"

#include <string>
#include <vector>

using Platform::RegFileParser;
using Platform::RegHive;
using Platform::RegRoot;
using Platform::RegValue;

namespace {

using TestSupport::Utf16LeWithBom;

std::vector<uint8_t> Utf16Z(std::u16string_view text) {
    std::vector<uint8_t> out;
    for (char16_t c : text) {
        out.push_back(static_cast<uint8_t>(c & 0xFF));
        out.push_back(static_cast<uint8_t>(c >> 8));
    }
    out.push_back(0);
    out.push_back(0);
    return out;
}

const RegValue* Value(const RegHive& hive, std::wstring_view key, std::wstring_view name) {
    const auto* node = hive.FindKey(key);
    return node ? RegHive::FindValue(*node, name) : nullptr;
}

}  // namespace

TEST(RegFileParser, ReadsAnExportOfTheRegistryEditor) {
    // What the registry editor writes: UTF-16LE with a mark, CRLF, long binary values wrapped
    // after 80 columns with a trailing backslash.
    const std::u16string text =
        u"Windows Registry Editor Version 5.00\r\n"
        u"\r\n"
        u"[HKEY_CURRENT_USER\\Software\\Lumetta Test]\r\n"
        u"@=\"Default text\"\r\n"
        u"\"Path\"=\"C:\\\\Program Files\\\\Lumetta \\\"Beta\\\"\"\r\n"
        u"\"Level\"=dword:0000002a\r\n"
        u"\"Expand\"=hex(2):25,00,54,00,45,00,4d,00,50,00,25,00,5c,00,61,00,62,00,63,00,64,\\\r\n"
        u"  00,65,00,00,00\r\n"
        u"\"Blob\"=hex:de,ad,be,ef\r\n"
        u"\"Multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
        u"\"Big\"=hex(b):01,00,00,00,00,00,00,80\r\n"
        u"\"Odd\"=hex(100):ff\r\n"
        u"\"Unicode \u00e9\u20ac\"=\"\u65e5\u672c \U0001F600\"\r\n"
        u"\r\n"
        u"[HKEY_CURRENT_USER\\Software\\Lumetta Test\\Sub Key]\r\n"
        u"\"Empty\"=\"\"\r\n"
        u"\"NoBytes\"=hex:\r\n";
    std::vector<Platform::RegParseIssue> issues;
    const RegHive hive = RegFileParser::Parse(Utf16LeWithBom(text), RegRoot::CurrentUser, &issues);
    EXPECT_TRUE(issues.empty()) << issues.front().line << ": " << issues.front().reason;

    const std::wstring key = L"Software\\Lumetta Test";
    struct Expected {
        const wchar_t* name;
        uint32_t type;
        std::vector<uint8_t> data;
    };
    const Expected values[] = {
        {L"", Platform::kRegSz, Utf16Z(u"Default text")},
        {L"Path", Platform::kRegSz, Utf16Z(u"C:\\Program Files\\Lumetta \"Beta\"")},
        {L"Level", Platform::kRegDword, {0x2a, 0, 0, 0}},
        {L"Expand", Platform::kRegExpandSz, Utf16Z(u"%TEMP%\\abcde")},
        {L"Blob", Platform::kRegBinary, {0xde, 0xad, 0xbe, 0xef}},
        {L"Multi", Platform::kRegMultiSz, {0x61, 0, 0, 0, 0x62, 0, 0, 0, 0, 0}},
        {L"Big", Platform::kRegQword, {1, 0, 0, 0, 0, 0, 0, 0x80}},
        {L"Odd", 0x100u, {0xff}},
    };
    for (const Expected& expected : values) {
        const RegValue* value = Value(hive, key, expected.name);
        ASSERT_NE(value, nullptr) << expected.name;
        EXPECT_EQ(value->type, expected.type) << expected.name;
        EXPECT_EQ(value->data, expected.data) << expected.name;
    }

    // Characters outside the BMP travel as surrogate pairs, in the file and in the value.
    const auto* unicode = Value(hive, L"Software\\Lumetta Test", L"UNICODE \u00c9\u20ac");
    ASSERT_NE(unicode, nullptr);
    EXPECT_EQ(unicode->data, Utf16Z(u"\u65e5\u672c \U0001F600"));

    // Names compare without regard to case; parents of a key exist.
    EXPECT_NE(hive.FindKey(L"SOFTWARE\\lumetta test\\SUB KEY\\"), nullptr);
    EXPECT_NE(hive.FindKey(L"Software"), nullptr);
    EXPECT_EQ(hive.FindKey(L"Software\\\\Lumetta Test"), nullptr);
    EXPECT_EQ(Value(hive, L"Software\\Lumetta Test\\Sub Key", L"Empty")->data, Utf16Z(u""));
    EXPECT_TRUE(Value(hive, L"Software\\Lumetta Test\\Sub Key", L"NoBytes")->data.empty());
    EXPECT_EQ(hive.Subkeys(L"software"), std::vector<std::wstring>{L"Lumetta Test"});
    EXPECT_EQ(hive.Subkeys(L""), std::vector<std::wstring>{L"Software"});
}

TEST(RegFileParser, SkipsMistakesInAHandWrittenFileAndKeepsTheRest) {
    // UTF-8 without mark, LF only, typed by hand: every mistake costs only its own line.
    const std::string text =
        "\"Orphan\"=\"before any key\"\n"                  // 1: no header, no key
        "[HKEY_LOCAL_MACHINE\\Software\\Product]\n"        // 2
        "\"Good\"=\"yes\" ; a comment after the value\n"   // 3
        "\"BadDword\"=dword:xyz\n"                         // 4
        "\"TooLong\"=dword:123456789\n"                    // 5
        "\"Open\"=\"no closing quote\n"                    // 6
        "\"BadHex\"=hex:01,zz,\\\n"                        // 7
        "  02,03\n"                                        // 8: belongs to line 7
        "\"NoEquals\" \"x\"\n"                             // 9
        "garbage line\n"                                   // 10
        "[HKEY_NOWHERE\\Software]\n"                       // 11
        "\"Lost\"=\"unknown root\"\n"                      // 12
        "[HKEY_LOCAL_MACHINE\\Software\\Product\n"         // 13: no bracket
        "[HKEY_LOCAL_MACHINE\\Software\\Product]\n"        // 14
        "\"Number\"=dword:1\n"                             // 15
        "\"number\"=dword:00000007\n"                      // 16: later line wins
        "\"Gone\"=\"soon\"\n"                              // 17
        "\"GONE\"=-\n"                                     // 18
        "@=\"default\"\n"                                  // 19
        "\"Weird\"=\"back\\slash kept\"\n"                 // 20
        "[HKEY_CURRENT_USER\\Software\\Other]\n"           // 21: another hive's key
        "\"Foreign\"=\"ignored\"\n"                        // 22
        "[HKLM\\Software\\Product\\Old\\Deeper]\n"         // 23
        "\"x\"=dword:1\n"                                  // 24
        "[-HKEY_LOCAL_MACHINE\\Software\\Product\\OLD]\n"  // 25
        "\"AfterDelete\"=\"nowhere\"\n"                    // 26
        "[HKEY_LOCAL_MACHINE\\Software\\Product\\Tail]\n"  // 27
        "\"Last\"=hex(2):41,00,00,00,\\\n"                 // 28: ends the file
        ;
    std::vector<Platform::RegParseIssue> issues;
    const RegHive hive = RegFileParser::Parse(text, RegRoot::LocalMachine, &issues);

    std::vector<size_t> lines;
    for (const auto& issue : issues) lines.push_back(issue.line);
    EXPECT_EQ(lines, (std::vector<size_t>{1, 1, 4, 5, 6, 7, 9, 10, 11, 12, 13, 26}));

    const std::wstring key = L"Software\\Product";
    EXPECT_EQ(Value(hive, key, L"Good")->data, Utf16Z(u"yes"));
    EXPECT_EQ(Value(hive, key, L"NUMBER")->data, (std::vector<uint8_t>{7, 0, 0, 0}));
    EXPECT_EQ(Value(hive, key, L"Gone"), nullptr);
    EXPECT_EQ(Value(hive, key, L"BadHex"), nullptr);
    EXPECT_EQ(Value(hive, key, L"Open"), nullptr);
    EXPECT_EQ(Value(hive, key, L"")->data, Utf16Z(u"default"));
    EXPECT_EQ(Value(hive, key, L"Weird")->data, Utf16Z(u"back\\slash kept"));
    EXPECT_EQ(hive.FindKey(L"Software\\Other"), nullptr);
    EXPECT_EQ(hive.FindKey(L"Software\\Product\\Old"), nullptr);
    EXPECT_EQ(hive.FindKey(L"Software\\Product\\Old\\Deeper"), nullptr);
    EXPECT_EQ(Value(hive, L"Software\\Product\\Tail", L"Last")->data,
              (std::vector<uint8_t>{0x41, 0, 0, 0}));
    // The values keep the spelling of the line that set them last, in file order.
    const auto* node = hive.FindKey(key);
    ASSERT_NE(node, nullptr);
    std::vector<std::wstring> names;
    for (const auto& v : node->values) names.push_back(v.name);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"Good", L"number", L"", L"Weird"}));
}

TEST(RegFileParser, DecodesEveryEncodingPeopleSave) {
    const std::string body =
        "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\A]\r\n"
        "\"K\"=\"\xC3\xA9t\xC3\xA9\"\r\n";
    // UTF-8 with and without mark.
    for (const std::string& bytes : {body, "\xEF\xBB\xBF" + body}) {
        const RegHive hive = RegFileParser::Parse(bytes, RegRoot::CurrentUser);
        ASSERT_NE(Value(hive, L"A", L"K"), nullptr);
        EXPECT_EQ(Value(hive, L"A", L"K")->data, Utf16Z(u"\u00e9t\u00e9"));
    }
    // UTF-16LE whose mark was lost.
    const std::string marked = Utf16LeWithBom(u"REGEDIT4\n[HKEY_CURRENT_USER\\B]\n\"V\"=dword:2\n");
    const RegHive unmarked = RegFileParser::Parse(marked.substr(2), RegRoot::CurrentUser);
    ASSERT_NE(Value(unmarked, L"B", L"V"), nullptr);

    // Broken bytes become U+FFFD instead of ending the text; a lone CR ends a line.
    EXPECT_EQ(RegFileParser::DecodeText("a\xFF"
                                        "b\xE2\x82"),
              L"a\uFFFDb\uFFFD\uFFFD");
    // The smallest code point of each length is valid; the same one a byte longer is not.
    EXPECT_EQ(RegFileParser::DecodeText("\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80|\xC1\xBF"),
              L"\u0080\u0800\U00010000|\uFFFD\uFFFD");
    const RegHive oldMac = RegFileParser::Parse("REGEDIT4\r[HKEY_CURRENT_USER\\C]\r\"V\"=\"x\"\r",
                                                RegRoot::CurrentUser);
    EXPECT_NE(Value(oldMac, L"C", L"V"), nullptr);

    // Nothing at all, or nothing but noise, is an empty hive with its root.
    for (std::string_view junk :
         {std::string_view(""), std::string_view("\0\0\0", 3), std::string_view("\xFF\xFE\x00")}) {
        const RegHive hive = RegFileParser::Parse(junk, RegRoot::CurrentUser);
        EXPECT_EQ(hive.KeyCount(), 1u);
        EXPECT_NE(hive.FindKey(L""), nullptr);
    }
}

TEST(RegFileParser, RootNamesAndPaths) {
    EXPECT_EQ(Platform::RegRootFromName(L"hkcu"), RegRoot::CurrentUser);
    EXPECT_EQ(Platform::RegRootFromName(L"HKEY_Local_Machine"), RegRoot::LocalMachine);
    EXPECT_EQ(Platform::RegRootFromName(L"HKPN"), RegRoot::PerformanceNlsText);
    EXPECT_FALSE(Platform::RegRootFromName(L"HKLMX").has_value());
    EXPECT_EQ(Platform::RegRootFullName(RegRoot::Users), L"HKEY_USERS");

    EXPECT_FALSE(Platform::SplitRegistryPath(L"\\Software").has_value());
    EXPECT_FALSE(Platform::SplitRegistryPath(L"a\\\\b").has_value());
    EXPECT_EQ(Platform::SplitRegistryPath(L"a\\b\\")->size(), 2u);
    EXPECT_TRUE(Platform::SplitRegistryPath(L"")->empty());
    EXPECT_EQ(Platform::FoldRegistryName(L"AbC\u00c4\u0416\u0130"), L"abc\u00e4\u0436\u0130");
}
