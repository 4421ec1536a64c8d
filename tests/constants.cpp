#include <mdtools/constants.h>
#include <mdtools/nullable.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Constants, haveTheirTexts)
{
    using Tools::C;
    const std::string all = C::Asterisk + C::Backslash + C::Blank + C::Colon + C::Comma + C::Dash +
                            C::Dot + C::Empty + C::Semicolon + C::Slash + C::Underscore + C::Zero;
    EXPECT_EQ(all, "*\\ :,-.;/_0");
    EXPECT_EQ(C::Empty.size(), 0U);
}

TEST(Nullable, emptyHoldsZero)
{
    const mdt::Nullable<double> empty;
    EXPECT_FALSE(empty.hasValue());
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_EQ(empty.getValue(), 0.0);
    EXPECT_EQ(empty.getValueOr(2.5), 2.5);

    const mdt::Nullable<double> zero(0.0);
    EXPECT_TRUE(zero.hasValue());
    EXPECT_EQ(zero.getValueOr(2.5), 0.0);
    EXPECT_FALSE(zero == empty);
    EXPECT_TRUE(empty == mdt::Nullable<double>());
    EXPECT_FALSE(zero == mdt::Nullable<double>(1.0));
}

}
