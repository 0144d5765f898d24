#include "foundation/Tokenizer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using foundation::CTokenizer;

TEST(Tokenizer, SplitsOnTheDefaultDelimiters) {
    CTokenizer tokens("alpha, beta\tgamma\r\ndelta");
    EXPECT_EQ(tokens.NextToken(), "alpha");
    EXPECT_EQ(tokens.NextToken(), "beta");
    EXPECT_EQ(tokens.NextToken(), "gamma");
    EXPECT_EQ(tokens.NextToken(), "delta");
    EXPECT_EQ(tokens.NextToken(), "");
    EXPECT_EQ(tokens.NextToken(), "") << "the end stays the end";
}

TEST(Tokenizer, ConstructorSkipsLeadingDelimiters) {
    CTokenizer tokens(" ,\t first");
    EXPECT_STREQ(tokens.Remaining(), "first");
    EXPECT_EQ(tokens.NextToken(), "first");
}

TEST(Tokenizer, KeepsAQuotedPartTogetherWithItsBlanksAndWithoutQuotes) {
    CTokenizer tokens("10, \"a name, with blanks\" last");
    EXPECT_EQ(tokens.NextToken(), "10");
    EXPECT_EQ(tokens.NextToken(), "a name, with blanks");
    EXPECT_EQ(tokens.NextToken(), "last");
}

TEST(Tokenizer, TokenGoesOnAfterTheClosingQuote) {
    CTokenizer tokens("ab\"c d\"e f");
    EXPECT_EQ(tokens.NextToken(), "abc de");
    EXPECT_EQ(tokens.NextToken(), "f");
}

TEST(Tokenizer, UnclosedQuoteRunsToTheEnd) {
    CTokenizer tokens("x \"open, to the end");
    EXPECT_EQ(tokens.NextToken(), "x");
    EXPECT_EQ(tokens.NextToken(), "open, to the end");
    EXPECT_EQ(tokens.NextToken(), "");
}

TEST(Tokenizer, EmptyQuotesGiveAnEmptyToken) {
    CTokenizer tokens("\"\" next");
    EXPECT_EQ(tokens.NextToken(), "");
    EXPECT_EQ(tokens.NextToken(), "next");
}

TEST(Tokenizer, OwnDelimiters) {
    CTokenizer tokens("a;b c;;d", ";");
    EXPECT_EQ(tokens.NextToken(), "a");
    EXPECT_EQ(tokens.NextToken(), "b c");
    EXPECT_EQ(tokens.NextToken(), "d");
}

TEST(Tokenizer, EmptyDelimiterSetMakesOneToken) {
    CTokenizer tokens("a, b", "");
    EXPECT_EQ(tokens.NextToken(), "a, b");
    EXPECT_EQ(tokens.NextToken(), "");
}

TEST(Tokenizer, NullTextIsEmpty) {
    CTokenizer tokens(nullptr);
    EXPECT_EQ(tokens.NextToken(), "");
    EXPECT_EQ(tokens.NextChar(), '\0');
    EXPECT_EQ(tokens.NextLong(0, 10, 7), 7);
}

TEST(Tokenizer, NextCharMovesOverTheDelimitersAfterIt) {
    CTokenizer tokens("ab, c");
    EXPECT_EQ(tokens.NextChar(), 'a');
    EXPECT_STREQ(tokens.Remaining(), "b, c");
    EXPECT_EQ(tokens.NextChar(), 'b');
    EXPECT_STREQ(tokens.Remaining(), "c");
    EXPECT_EQ(tokens.NextChar(), 'c');
    EXPECT_EQ(tokens.NextChar(), '\0');
    EXPECT_EQ(tokens.NextChar(), '\0');
}

TEST(Tokenizer, NextLongOutOfBoundsOrNotANumberGivesTheDefault) {
    CTokenizer tokens("12 x 10 0 -1");
    EXPECT_EQ(tokens.NextLong(0, 10, 5), 5) << "12 is above 10";
    EXPECT_EQ(tokens.NextLong(0, 10, 5), 5) << "x is no number";
    EXPECT_EQ(tokens.NextLong(0, 10, 5), 10) << "the bounds belong to the range";
    EXPECT_EQ(tokens.NextLong(0, 10, 5), 0);
    EXPECT_EQ(tokens.NextLong(0, 10, 5), 5) << "-1 is below 0";
}

TEST(Tokenizer, NextLongAcceptsAMinusBeforeADigitOnly) {
    CTokenizer tokens("-7 - -x +3 7px");
    EXPECT_EQ(tokens.NextLong(-10, 10, 99), -7);
    EXPECT_EQ(tokens.NextLong(-10, 10, 99), 99);
    EXPECT_EQ(tokens.NextLong(-10, 10, 99), 99);
    EXPECT_EQ(tokens.NextLong(-10, 10, 99), 99) << "a plus sign is no number here";
    EXPECT_EQ(tokens.NextLong(-10, 10, 99), 7) << "what follows the digits is ignored";
}

TEST(Tokenizer, NextLongOfANumberTooLargeForALong) {
    CTokenizer tokens("99999999999999999999999 -99999999999999999999999");
    EXPECT_EQ(tokens.NextLong(0, 1000, 3), 3);
    EXPECT_EQ(tokens.NextLong(-1000, 0, 4), 4);
    CTokenizer wide("99999999999999999999999");
    EXPECT_EQ(wide.NextLong(LONG_MIN, LONG_MAX, 4), LONG_MAX) << "held at the long's bound";
}

TEST(Tokenizer, NextLongAtTheEndGivesTheDefault) {
    CTokenizer tokens("");
    EXPECT_EQ(tokens.NextLong(0, 10, 6), 6);
}

TEST(Tokenizer, NextLongReadsAQuotedNumber) {
    CTokenizer tokens("\"42\"");
    EXPECT_EQ(tokens.NextLong(0, 100, 0), 42);
}
