#include <algorithm>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "Common/VQMException.h"
#include "Tests/Support/AllocationFault.h"
#include "Tests/VQMSerialize/XMLSerializeTest.h"

using parser_fault::faults;
using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;

namespace {

/// Throws `thrown` out of each kind of step and expects it back, the parser freed.
class XMLSerializeException : public XMLSerialize {
protected:
    template <typename Exception>
    void ExpectCarried(const Exception& thrown)
    {
        const Lines steps = {"step 0 name a attributes x 1", "step 2 text y", "step 1 name a"};
        for (std::size_t i = 0; i < steps.size(); ++i) {
            target.onStep = [&](const std::string& line) {
                if (line == steps[i]) {
                    throw Exception(thrown);
                }
            };
            Take();
            try {
                Parse("<a x='1'>y</a>");
                ADD_FAILURE() << "nothing came out of " << steps[i];
            } catch (const Exception& caught) {
                EXPECT_EQ(typeid(caught), typeid(thrown));
            }
            ExpectNoParser();
            EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
            EXPECT_EQ(serializer.GetParsingAttributes(), nullptr);
            EXPECT_EQ(serializer.GetParsingText(), nullptr);
            Lines expected = {"XML_GetBuffer 14"};
            expected.insert(expected.end(), steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            expected.emplace_back("Destroy");
            EXPECT_EQ(Take(), expected) << "no further step, no log line";
        }
        target.onStep = nullptr;
        EXPECT_TRUE(Parse("<a/>")) << "the serializer can be used again";
    }
};

} // namespace

TEST_F(XMLSerializeException, OfAnyTypePropagatesAfterTheParserIsFreed)
{
    ExpectCarried(42);
    ExpectCarried(std::runtime_error("100% full"));
    ExpectCarried(std::bad_alloc());
    ExpectCarried(CVQMException(0x100007, "a message that does not fit into the string object"));
    ExpectCarried(std::string("a text that does not fit into the string object"));
}

TEST_F(XMLSerializeException, EndsTheParseForAnEmptyElementToo)
{
    // The parser still tells the end of an element whose start stopped it.
    target.onStep = [](const std::string&) { throw 1; };
    EXPECT_THROW(Parse("<a/>"), int);
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", "step 0 name a attributes", "Destroy"));
}

TEST_F(XMLSerialize, TheParseFailsWithoutMemoryForACopyOfTheText)
{
    // 5000 bytes want a block of 8192; 4096 bytes want it for the terminating NUL.
    for (const std::size_t size : {5000U, 4096U}) {
        ASSERT_TRUE(serializer.Create());
        const std::string document = "<a><b/>" + std::string(size, 'x') + "<c/></a>";
        const std::string buffer = "XML_GetBuffer " + std::to_string(document.size());
        Take();
        allocation_fault::FailSize(8192);
        const bool result = serializer.Deserialize(document.c_str(), &target);
        allocation_fault::FailSize(0);
        EXPECT_FALSE(result);
        ExpectNoParser();
        EXPECT_THAT(Take(), ElementsAre(buffer, "step 0 name a attributes", "step 0 name b attributes", "step 1 name b",
                                        kParseError, "Destroy"));
    }
    EXPECT_EQ(target.text, "");
    EXPECT_TRUE(Parse("<a>" + std::string(5000, 'x') + "</a>"));
}

// Every allocation of the parser fails in turn, until a document gets through.
TEST_F(XMLSerialize, AParserWithoutMemoryFailsCleanly)
{
    std::string document =
        "<!DOCTYPE a [<!ENTITY e 'entity'>]><a x='&lt;1' y='&e;'>&e; text<b z='" + std::string(3000, 'v') + "'/></a>";
    EXPECT_TRUE(Parse(document));
    const Lines whole = Take();
    std::size_t refusedParsers = 0;
    std::size_t failedParses = 0;
    for (std::size_t n = 1; n < 1000; ++n) {
        faults().failingAllocation = n;
        if (!serializer.Create()) {
            ++refusedParsers;
            EXPECT_THAT(Take(), ElementsAre(Line("Create", " XML_ParserCreate is Failed!!!\n")));
            ExpectNoParser();
            continue;
        }
        const bool result = serializer.Deserialize(document.c_str(), &target);
        ExpectNoParser();
        Lines lines = Take();
        if (result) {
            EXPECT_EQ(lines, whole);
            EXPECT_NE(faults().failingAllocation, 0U) << "a failed allocation went unnoticed";
            EXPECT_GT(refusedParsers, 0U);
            EXPECT_GT(failedParses, 1U);
            return;
        }
        ++failedParses;
        ASSERT_GE(lines.size(), 3U);
        EXPECT_EQ(lines.back(), "Destroy");
        lines.pop_back();
        EXPECT_TRUE(lines.back() == kParseError || lines.back() == kNoBuffer) << lines.back();
        lines.pop_back();
        EXPECT_TRUE(std::equal(lines.begin(), lines.end(), whole.begin())) << "at allocation " << n;
    }
    ADD_FAILURE() << "no document got through";
}

TEST_F(XMLSerialize, ExpandingEntitiesAreLimited)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 9; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        document += "<!ENTITY e" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j) {
            document += inner;
        }
        document += "'>";
    }
    EXPECT_FALSE(Parse(document + "]><a b='&e8;'/>"));
}
