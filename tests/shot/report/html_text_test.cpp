// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/html_text.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(HtmlText, EscapesWhatMeansSomething) {
  EXPECT_EQ(htmlText("a <b> & \"c\" 'd'"), "a &lt;b&gt; &amp; &quot;c&quot; 'd'");
  EXPECT_EQ(htmlText("gr\xc3\xbc\xc3\x9f"), "gr\xc3\xbc\xc3\x9f");
}

TEST(HtmlText, ReplacesWhatIsNoText) {
  const std::string none = "\xef\xbf\xbd";
  EXPECT_EQ(htmlText("a\xff"
                     "b"),
            "a" + none + "b");
  EXPECT_EQ(htmlText(std::string("a\0b", 3)), "a" + none + "b");
  EXPECT_EQ(htmlText("\x1b[31m"), none + "[31m");
  EXPECT_EQ(htmlText("\xef\xbf\xbe\xef\xbf\xbf"), none + none);
  EXPECT_EQ(htmlText("a\tb\nc"), "a\tb\nc");
}
