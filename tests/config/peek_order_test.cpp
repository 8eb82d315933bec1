#include "config/config_file.h"
#include "config/peek_order.h"
#include "fs/file_io.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> titles(const std::vector<const LabVariant*>& styles)
{
    std::vector<std::string> out;
    for (const LabVariant* style : styles)
        out.push_back(style->title());
    return out;
}

// The default order itself is pinned byte for byte by the peek-styles command's test.
const std::vector<std::string> kDefault = titles(labVariantTypes());

TEST(PeekOrder, SavedTitlesComeFirstThenTheRest)
{
    struct Case {
        const char* text;
        std::vector<std::string> first;
    };
    const Case cases[] = {
        {"names = [\n  \"Conveyor\",\n]\n", {"Conveyor"}},
        {"names = [\"Zoom fill\", \"Nope\", \"Rail Drill\"]", {"Rail Drill"}},
        {"# \"Conveyor\"\n  \"Peek Tabs\",\n", {}},                       // no "names": all ignored
        {"# names\n\"Card Stack\",\"Conveyor\r\n", {"Card Stack"}},       // unpaired last quote
        {"names = [\n\"Zoom Open\",\n\"Zoom Open\"]", {"Zoom Open", "Zoom Open"}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> expected = c.first;
        for (const std::string& title : kDefault)
            if (std::find(c.first.begin(), c.first.end(), title) == c.first.end())
                expected.push_back(title);
        EXPECT_EQ(titles(peekOrderApply(peekOrderParse(c.text))), expected) << c.text;
    }
}

TEST(PeekOrder, SaveWritesTheLayoutAndLoadReadsItBack)
{
    std::vector<std::string> names = {"Rail Drill", "Zoom Fill", "Custom # 1"};
    ASSERT_TRUE(peekOrderSave(names));
    EXPECT_EQ(fileReadAll(peekOrderPath()),
              "# Brondel Cmd+4 Peek style order \u2014 written by Rearrange \u2192 Done.\n"
              "# Styles not listed appear after these, in default order.\n"
              "names = [\n  \"Rail Drill\",\n  \"Zoom Fill\",\n  \"Custom # 1\",\n]\n");
    EXPECT_EQ(peekOrderLoad(), names);
    EXPECT_EQ(titles(peekOrderedTypes())[1], "Zoom Fill");
}

} // namespace
