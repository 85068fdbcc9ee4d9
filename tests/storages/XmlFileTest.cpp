#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "StorageTestSupport.h"
#include "storages/NamedValue.h"
#include "storages/XmlFile.h"

namespace {

using FileSystem::XmlFile;
using FileSystem::XmlNode;
using StorageTests::Wide;

constexpr char kDocument[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<ResourceLib>\n"
    "  <Resources>\n"
    "    <!-- note -->\n"
    "    <String name=\"A\" empty=\"\">  Hello <b>big</b> world  </String>\n"
    "    <String name=\"B\" xml:space=\"preserve\">  kept  </String>\n"
    "    tail\n"
    "  </Resources>\n"
    "</ResourceLib>\n";

std::string ExpectOpenFails(const std::wstring& path) {
    try {
        XmlFile file(path, false);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "opened";
}

TEST(XmlFile, OpensQueriesAndReads) {
    TestSupport::TempFolder folder;
    ASSERT_TRUE(TestSupport::WriteFile(folder / "Resources.xml", kDocument));
    XmlFile file(Wide(folder / "Resources.xml"), false);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(file.GetNodeName(file.GetRoot()), L"ResourceLib");

    const XmlNode resources = file.SelectSingleNode(L"ResourceLib/Resources");
    ASSERT_TRUE(resources);
    EXPECT_FALSE(file.SelectSingleNode(L"ResourceLib/Nothing"));
    EXPECT_FALSE(file.SelectSingleNode(L"!!not xpath"));
    const XmlNode a = file.SelectSingleNode(resources, L"String[@name=\"A\"]");
    ASSERT_TRUE(a);

    std::vector<XmlNode> nodes;
    EXPECT_TRUE(file.SelectNodes(nodes, L"String", resources));
    EXPECT_EQ(nodes.size(), 2u);
    EXPECT_TRUE(file.SelectNodes(nodes, L"@*", a));  // attributes are nodes too
    ASSERT_EQ(nodes.size(), 2u);
    EXPECT_EQ(file.GetNodeName(nodes[1]), L"empty");
    EXPECT_FALSE(file.IsElement(nodes[1]));
    EXPECT_FALSE(file.SelectNodes(nodes, L"String", XmlNode()));
    EXPECT_TRUE(nodes.empty());

    // Children in document order, comments and text included, blank text between tags not.
    EXPECT_TRUE(file.GetChildNodes(resources, nodes));
    std::vector<std::wstring> names;
    for (const XmlNode& node : nodes) names.push_back(file.GetNodeName(node));
    EXPECT_EQ(names, (std::vector<std::wstring>{L"#comment", L"String", L"String", L"#text"}));
    EXPECT_THROW(file.GetNodeName(XmlNode()), std::runtime_error);

    XmlFile::Error error;
    EXPECT_EQ(file.GetAttribute(a, L"name", &error), L"A");
    EXPECT_FALSE(error);
    EXPECT_EQ(file.GetAttribute(a, L"empty", &error), L"");
    EXPECT_FALSE(error);
    EXPECT_EQ(file.GetAttribute(a, L"width", &error), L"");
    EXPECT_EQ(error, StorageSystem::MakeErrorCode(StorageSystem::ItemNotFound));
    EXPECT_EQ(file.GetAttribute(XmlNode(), L"name", &error), L"");
    EXPECT_EQ(error, StorageSystem::MakeErrorCode(StorageSystem::NullPointer));
    EXPECT_THROW(file.GetAttribute(a, L"width"), boost::system::system_error);
    EXPECT_EQ(file.GetAttributeOr(a, L"width", L"16"), L"16");

    // Descendant text, trimmed unless xml:space="preserve" says otherwise.
    EXPECT_EQ(file.GetText(a), L"Hello big world");
    EXPECT_EQ(file.GetText(nodes[2]), L"  kept  ");
    EXPECT_EQ(file.GetText(XmlNode(), &error), L"");
    EXPECT_EQ(error, StorageSystem::MakeErrorCode(StorageSystem::NullPointer));

    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.SelectSingleNode(L"ResourceLib"));
    EXPECT_FALSE(file.Save(L""));
}

// What a conforming reader makes of a document: nullptr where it must refuse to open it,
// else the text of the node that `query` selects from the document element.
struct ReadCase {
    const char* what;
    std::string document;
    const wchar_t* query;
    const wchar_t* text;
};

TEST(XmlFile, ReadsWhatTheXmlRulesSay) {
    TestSupport::TempFolder folder;
    ASSERT_TRUE(TestSupport::WriteFile(folder / "secret.txt", "secret"));
    const ReadCase cases[] = {
        {"bare ampersand", "<r>a & b</r>", L".", nullptr},
        {"duplicate attribute", "<r a=\"1\" a=\"2\"/>", L".", nullptr},
        {"undefined entity", "<r>&nope;</r>", L".", nullptr},
        {"second root element", "<r/><s/>", L".", nullptr},
        {"text after the root", "<r/>tail", L".", nullptr},
        {"< inside an attribute", "<r a=\"<\"/>", L".", nullptr},
        {"unclosed element", "<ResourceLib><a></ResourceLib>", L".", nullptr},
        {"empty file", "", L".", nullptr},
        {"declared encoding", "<?xml version=\"1.0\" encoding=\"windows-1252\"?><r>caf\xE9</r>",
         L".", L"caf\u00E9"},
        {"CDATA kept whole", "<r> <![CDATA[  kept  ]]> </r>", L".", L"  kept  "},
        {"attribute node", "<r><s name=\" A \"/></r>", L"s/@name", L"A"},
        {"name test and exact value",
         "<r xmlns:x=\"u\"><x:s name=\"b\">in x</x:s><s name=\" b\">spaced</s><s name=\"b\">"
         "plain</s><s name=\"b\">second</s></r>",
         L"s[@name=\"b\"]", L"plain"},
        {"the same through the XPath engine",
         "<r xmlns:x=\"u\"><x:s name=\"b\">in x</x:s><s name=\" b\">spaced</s><s name=\"b\">"
         "plain</s><s name=\"b\">second</s></r>",
         L"s[ @name = \"b\" ]", L"plain"},
        {"internal entity", "<!DOCTYPE r [<!ENTITY co \"Lumetta\">]><r>&co; Ltd</r>", L".",
         L"Lumetta Ltd"},
        {"external entity never loaded",
         "<!DOCTYPE r [<!ENTITY x SYSTEM \"secret.txt\">]><r>[&x;]</r>", L".", L"[]"},
    };
    for (const ReadCase& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(TestSupport::WriteFile(folder / "case.xml", c.document));
        if (c.text == nullptr) {
            EXPECT_EQ(ExpectOpenFails(Wide(folder / "case.xml")),
                      "Failed to open or parse the designated XML file");
            continue;
        }
        XmlFile file(Wide(folder / "case.xml"), false);
        const XmlNode found = file.SelectSingleNode(file.GetRoot(), c.query);
        ASSERT_TRUE(found);
        EXPECT_EQ(file.GetText(found), c.text);
    }
}

TEST(XmlFile, FailuresAndSaving) {
    TestSupport::TempFolder folder;
    ASSERT_TRUE(TestSupport::WriteFile(folder / "broken.xml", "<ResourceLib><a></ResourceLib>"));
    EXPECT_EQ(ExpectOpenFails(Wide(folder / "missing.xml")),
              "Failed to open or parse the designated XML file");

    XmlFile broken(false);
    EXPECT_THROW(broken.Open(Wide(folder / "broken.xml"), false), std::runtime_error);
    EXPECT_FALSE(broken.IsOpen());
    EXPECT_FALSE(broken.Close());

    // saveOnClose writes the document back to its own path at Close.
    ASSERT_TRUE(TestSupport::WriteFile(folder / "doc.xml", kDocument));
    {
        XmlFile file(Wide(folder / "doc.xml"), true);
        EXPECT_TRUE(file.Save(Wide(folder / "copy.xml")));
        ASSERT_TRUE(TestSupport::WriteFile(folder / "doc.xml", "overwritten"));
    }
    XmlFile reread(Wide(folder / "doc.xml"), false);
    EXPECT_TRUE(reread.SelectSingleNode(L"ResourceLib/Resources/String"));
    XmlFile copy(Wide(folder / "copy.xml"), false);
    EXPECT_TRUE(copy.SelectSingleNode(L"ResourceLib/Resources/String"));
}

TEST(XmlFile, CountsItsInstances) {
    StorageSystem::SharedNumber* count = StorageSystem::XmlFileInstanceCount();
    ASSERT_NE(count, nullptr);
    const int before = count->Read();
    {
        XmlFile first(false), second(false), third(false);
        EXPECT_EQ(count->Read(), before + 3);
        // A failed opening constructor builds no object and counts nothing.
        EXPECT_THROW(XmlFile(L"/nonexistent/file.xml", false), std::runtime_error);
        EXPECT_EQ(count->Read(), before + 3);
    }
    EXPECT_EQ(count->Read(), before);
}

}  // namespace
