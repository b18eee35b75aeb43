// The HTML that the list consists of, whole, for documents that tell something.
#include "PanelFixture.h"

#include "CommentsContainerHandler.h"
#include "SubtypeTable.h"
#include "documents/Population.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/WideText.h"
#include "services/ResourceStore.h"

#include <set>
#include <string_view>

namespace PanelTests {
namespace {

using Documents::MakeEntry;

std::string Tooltip(const std::string& id, const std::string& subject, const std::string& title,
                    const std::string& created = {}, const std::string& modified = {})
{
    const auto row = [](const std::string& label, const std::string& date) {
        return date.empty() ? "<tr style=\"display:none;\"><td>:</td><td></td></tr>"
                            : "<tr style=\"display:block;\"><td>" + label + ":</td><td>" + date +
                                  "</td></tr>";
    };
    const std::string table =
        R"(<table class="props-table" border="0" cellpadding="0" cellspacing="0">)";
    return R"(<popup class="annot-details" id=")" + id + "\">" + table + "<tr><td>" + subject +
           ":</td><td>" + title + "</td></tr></table><div class=\"separator\"></div>" + table +
           row("Date created", created) + row("Date modified", modified) + "</table></popup>";
}

// An item in the full form; without contents in the simple one.
std::string Item(const std::string& open, const std::string& id, const std::string& name,
                 const std::string& contents, const std::string& tooltip)
{
    return "<li " + open + " titleid=\"" + id + "\">" +
           (contents.empty() ? "\r\n  " + name + "\r\n  "
                             : "<h3>" + name + "</h3><p>" + contents + "</p>") +
           tooltip + "</li>";
}

std::string Page(std::uint32_t index, const std::string& items)
{
    const std::string number = std::to_string(index);
    return WithoutIndents("<ul page-item=\"" + number + "\"><li page-index=\"" + number +
                          "\"><div class=\"icon document\" localize>Page " +
                          std::to_string(index + 1) + "</div><div><ul class=\"comments\">" + items +
                          "</ul></div></li></ul>");
}

const std::string kNoItems =
    "<p id=\"NoItemsMessage\" localize=\"\" __l_o_c_a_l_e__t_o_k_e_n__=\"There are no items to "
    "show\">There are no items to show</p>";

class RenderingTest : public PanelTest {
protected:
    void SetUp() override
    {
        VxHostRegisterService("LocaleManager", MuteLocale::Make()->AsInterface());
        Start();
    }

    std::string Render(const DocumentPtr& document) const
    {
        const auto object = Workbench::BLDocumentObject::Make(state, document);
        ListRenderer renderer(object->AsInterface());
        return WithNumberedTooltips(ToUtf8(CommentsContainerHandler::RenderResults(renderer)));
    }
};

TEST_F(RenderingTest, AListIsTheTemplatesFilledWithNothingElse)
{
    const std::string expected =
        " <ul page-item=\"1\">\r\n"
        "  <li page-index=\"1\">\r\n"
        "    <div class=\"icon document\" localize>Page 2</div>\r\n"
        "    <div>\r\n"
        "      <ul class=\"comments\"><li .highlight annot-name=\"1_0\" titleid=\"#1\">\r\n"
        "  <h3>Highlight</h3>\r\n"
        "  <p>two<br/>lines</p>\r\n"
        "  <popup class=\"annot-details\" id=\"#1\">\r\n"
        "  <table class=\"props-table\" border=\"0\" cellpadding=\"0\" cellspacing=\"0\">\r\n"
        "    <tr>\r\n"
        "      <td>Subject:</td>\r\n"
        "      <td>Author</td>\r\n"
        "    </tr>\r\n"
        "  </table>\r\n"
        "  <div class=\"separator\"></div>\r\n"
        "  <table class=\"props-table\" border=\"0\" cellpadding=\"0\" cellspacing=\"0\">\r\n"
        "    <tr style=\"display:none;\">\r\n"
        "      <td>:</td>\r\n"
        "      <td></td>\r\n"
        "    </tr>\r\n"
        "    <tr style=\"display:none;\">\r\n"
        "      <td>:</td>\r\n"
        "      <td></td>\r\n"
        "    </tr>\r\n"
        "  </table>\r\n"
        "</popup>\r\n\r\n"
        "</li>\r\n"
        "</ul>\r\n"
        "    </div>\r\n"
        "  </li>\r\n"
        "</ul>\r\n";
    Documents::AnnotationProperties properties;
    properties.subtype = "Highlight";
    properties.contents = u"two\nlines";
    properties.title = u"Author";
    properties.subject = u"Subject";
    EXPECT_EQ(Render(MakeDocument({{}, {MakeEntry(properties)}})), expected);
}

TEST_F(RenderingTest, SubtypesHaveTheirNamesAndIcons)
{
    struct Row {
        const char* subtype;
        const char* className;
        const char* name;
    };
    const Row rows[] = {
        {"Text", ".text", "Text"},
        {"Squiggly", ".highlight", "Squiggly"},
        {"Caret", ".highlight", "Caret"},
        {"StrikeOut", ".strikethrough", "StrikeOut"},
        {"Polygon", ".pencil", "Polygon"},
        {"Square", ".rectangle", "Square"},
        {"Circle", ".oval", "Circle"},
        {"Redact", ".redaction", "Redact"},
        {"Link", "", "Link"},
        {"FreeText", "", "FreeText"},
        {"highlight", "", "highlight"},    // names are compared with their case
        {"Moebius<b>", "", "Moebius<b>"},  // outside every table
        {"", "", ""},                      // none
    };
    std::vector<MemoryEntry> entries;
    std::string items;
    for (const Row& row : rows) {
        const std::string id = "#" + std::to_string(entries.size() + 1);
        const std::string name = "annot-name=\"0_" + std::to_string(entries.size()) + "\"";
        items += Item(std::string(row.className) + " " + name, id, row.name, "",
                      Tooltip(id, row.name, row.name));
        entries.push_back(Comment(row.subtype));
    }
    Documents::MemoryOptions listAll;
    listAll.listAll = true;
    EXPECT_EQ(WithoutIndents(Render(MakeDocument({entries}, listAll))), Page(0, items));

    const auto sheet =
        Workbench::ResourceStore::Instance().Find(u"document-panel-comments/panel.css");
    ASSERT_NE(sheet.data, nullptr);
    const std::string_view rules(reinterpret_cast<const char*>(sheet.data), sheet.size);
    for (const SubtypeEntry& entry : SubtypeTable()) {
        const std::string rule = "li" + ToUtf8(entry.className) + " { background: url(";
        EXPECT_NE(rules.find(rule), rules.npos) << entry.subtype << " has no icon";
    }
}

TEST_F(RenderingTest, TextsStandInTheirPlacesAsTheyAre)
{
    struct Row {
        const char* what;
        std::u16string contents, title, subject;
        std::string shownContents, shownTitle, shownSubject;
    };
    const Row rows[] = {
        {"nothing", u"", u"", u"", "", "Text", "Text"},
        {"only a break", u"\n", u"", u"", "<br/>", "Text", "Text"},
        {"every kind of break", u"a\r\nb\nc\rd\n\re\r\r\n\n", u"", u"",
         "a<br/>b<br/>c<br/>d<br/><br/>e<br/><br/><br/>", "Text", "Text"},
        {"markup", u"<u>a</u> & \"b\" <!-- c", u"<i>t</i>", u"s&amp;", "<u>a</u> & \"b\" <!-- c",
         "<i>t</i>", "s&amp;"},
        {"placeholders", u"ANNOT_TOOLTIP_ID CLASS_NAME PAGE_ITEMS", u"ANNOT_SUBJECT",
         u"ANNOT_TITLE ANNOT_TOOLTIP", "ANNOT_TOOLTIP_ID CLASS_NAME PAGE_ITEMS", "ANNOT_SUBJECT",
         "ANNOT_TITLE ANNOT_TOOLTIP"},
        {"format directives", u"%1% $& \\1 %s", u"%2%", u"$1", "%1% $& \\1 %s", "%2%", "$1"},
        {"breaks elsewhere stay", u"", u"a\nb", u"c\td", "", "a\nb", "c\td"},
        {"no subject", u"", u"T", u"", "", "T", "Text"},
        {"no title", u"", u"", u"S", "", "Text", "S"},
        {"supplementary characters", u"\U0001F600\U0010FFFD", u"\U00020000", u"é",
         "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD", "\xF0\xA0\x80\x80", "\xC3\xA9"},
        {"unpaired surrogates", std::u16string{0xD800, u'a', 0xDC00}, std::u16string{0xDFFF},
         std::u16string{u'b', 0xDBFF},
         "\xEF\xBF\xBD"
         "a\xEF\xBF\xBD",
         "\xEF\xBF\xBD", "b\xEF\xBF\xBD"},
        {"spaces only", u"  ", u" ", u" ", "  ", " ", " "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Documents::AnnotationProperties properties;
        properties.subtype = "Text";
        properties.contents = row.contents;
        properties.title = row.title;
        properties.subject = row.subject;
        EXPECT_EQ(WithoutIndents(Render(MakeDocument({{MakeEntry(properties)}}))),
                  Page(0, Item(".text annot-name=\"0_0\"", "#1", "Text", row.shownContents,
                               Tooltip("#1", row.shownSubject, row.shownTitle))));
    }
}

TEST_F(RenderingTest, PositionsAreThoseOfTheArray)
{
    const MemoryEntry twice = Comment("Ink");
    const auto ink = [](const std::string& name, const std::string& id) {
        return Item(".pencil annot-name=\"" + name + "\"", id, "Ink", "",
                    Tooltip(id, "Ink", "Ink"));
    };
    // One of them stands at 3, 53, 103 and 153.
    Pages crowded(1);
    std::string crowdedItems;
    for (unsigned i = 0; i < 200; ++i) {
        const bool isRepeated = i % 50 == 3;
        crowded[0].push_back(isRepeated ? twice : Comment("Ink"));
        crowdedItems += ink("0_" + std::to_string(isRepeated ? 3 : i), "#" + std::to_string(i + 1));
    }
    struct Row {
        const char* what;
        Pages pages;
        std::string expected;
    };
    const Row rows[] = {
        {"no pages", {}, kNoItems},
        {"a crowded page", crowded, Page(0, crowdedItems)},
        {"pages without annotations", {{}, {}}, kNoItems},
        {"nothing listed",
         {{nullptr},
          {Comment("Link"), Comment("Popup"), Comment("Ink", u"", Documents::kFlagHidden)}},
         kNoItems},
        {"pages between",
         {{}, {Comment("Ink")}, {Comment("Link")}, {}, {Comment("Ink")}},
         Page(1, ink("1_0", "#1")) + Page(4, ink("4_0", "#2"))},
        {"what is not listed keeps its position",
         {{nullptr, Comment("Ink"), Comment("Link"), nullptr, Comment("Ink"),
           Comment("Ink", u"", Documents::kFlagNoView)}},
         Page(0, ink("0_1", "#1") + ink("0_4", "#2"))},
        {"one annotation several times",
         {{Comment("Ink"), twice, twice}, {twice}},
         Page(0, ink("0_0", "#1") + ink("0_1", "#2") + ink("0_1", "#3")) +
             Page(1, ink("1_0", "#4"))},
        {"two digits",
         {{},
          {},
          {},
          {},
          {},
          {},
          {},
          {},
          {},
          {},
          {},
          {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
           Comment("Ink")}},
         Page(11, ink("11_10", "#1"))},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(WithoutIndents(Render(MakeDocument(row.pages))), row.expected);
    }
    ListRenderer nothing(nullptr);
    EXPECT_EQ(ToUtf8(CommentsContainerHandler::RenderResults(nothing)), kNoItems);
    const auto document = Workbench::BLDocumentObject::Make(state, MakeDocument(FivePages()));
    ListRenderer renderer(document->AsInterface());
    EXPECT_EQ(CommentsContainerHandler::RenderPageItem(renderer, 1), L"");
    EXPECT_EQ(CommentsContainerHandler::RenderPageItem(renderer, 5), L"");
    EXPECT_EQ(CommentsContainerHandler::RenderPageItem(renderer, kPDNoPage), L"");
    EXPECT_EQ(TakeError(), "BLDocument::AcquirePage() failed, code: 9") << "says the host";
}

TEST_F(RenderingTest, RowsOfDatesAreShownWhenThereIsADate)
{
    const _PDDateRec day{2024, 5, 1, 10, 0, 0, 0};
    const _PDDateRec month13{2024, 13, 1, 10, 0, 0, 0};
    struct Row {
        _PDDateRec created, modified;
        bool showsCreated, showsModified;
    };
    const Row rows[] = {{day, {}, true, false},
                        {{}, day, false, true},
                        {day, day, true, true},
                        {month13, month13, false, false}};
    const std::string text =
        ToUtf8(CommentsContainerHandler::FormatAnnotDate(day, L"%Y-%m-%d %H:%M:%S"));
    ASSERT_NE(text, "");
    for (const Row& row : rows) {
        Documents::AnnotationProperties properties;
        properties.subtype = "Text";
        properties.created = row.created;
        properties.modified = row.modified;
        EXPECT_EQ(WithoutIndents(Render(MakeDocument({{MakeEntry(properties)}}))),
                  Page(0, Item(".text annot-name=\"0_0\"", "#1", "Text", "",
                               Tooltip("#1", "Text", "Text", row.showsCreated ? text : "",
                                       row.showsModified ? text : ""))));
    }
}

TEST_F(RenderingTest, TooltipsAreTiedToTheirItemsAndNeverRepeat)
{
    const auto object =
        Workbench::BLDocumentObject::Make(state, Documents::MakePopulationDocument({300, 7}));
    ListRenderer renderer(object->AsInterface());
    const std::string html = ToUtf8(CommentsContainerHandler::RenderResults(renderer)) +
                             ToUtf8(CommentsContainerHandler::RenderResults(renderer));
    std::set<std::string> ids;
    std::size_t items = 0;
    for (std::size_t at = html.find("titleid=\""); at != html.npos;
         at = html.find("titleid=\"", at + 1)) {
        const std::string id = html.substr(at + 9, 36);
        EXPECT_EQ(html.find(" id=\"" + id + "\"", at), html.find(" id=\"", at)) << id;
        ids.insert(id);
        ++items;
    }
    EXPECT_EQ(items, 600u);
    EXPECT_EQ(ids.size(), items);
}

TEST_F(RenderingTest, ARenderingThatIsNotWantedAnyMoreEndsEarly)
{
    const auto object =
        Workbench::BLDocumentObject::Make(state, Documents::MakePopulationDocument({300, 10}));
    host.State().calls.LogQueries(true);
    ListRenderer renderer(object->AsInterface());
    std::uint32_t asked = 0;
    renderer.wanted = [&] { return ++asked < 40; };
    CommentsContainerHandler::RenderResults(renderer);
    std::set<std::uint32_t> pages;
    for (const auto& call : host.State().calls.Take()) {
        if (call.name == std::string_view("BLDocument.AcquirePage")) {
            pages.insert(std::get<std::uint32_t>(call.arguments.at(0)));
        }
    }
    EXPECT_EQ(pages.size(), 2u);
}

}  // namespace
}  // namespace PanelTests
