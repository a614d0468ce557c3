// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page.h"

#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <array>

#include "shot/report/page_parts.h"
#include "shot/report/page_pictures.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/small_result.h"
#include "tests/shot/report/unpacked.h"
#include "tests/support/files.h"
#include "tests/support/kept_results.h"

using namespace cornerpin;

namespace {

std::string pageOf(const PageSubject& subject, const PictureUse* pictures = nullptr,
                   std::vector<std::string>* broken = nullptr) {
  const TemporaryFolder folder;
  OutputFile out(folder / "page.html");
  const std::vector<std::string> left = writePage(subject, pictures, out);
  if (broken != nullptr) *broken = left;
  out.commit();
  const std::string page = readFile(folder / "page.html");
  const std::string data = dataTextOf(page);
  if (subject.result.frames.size() < 100) keepResult(data);  // a schema takes long over large ones
  return page;
}

// As a browser computes it of an element's text.
std::string hashOf(const std::string& text) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
  ::SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
  std::array<unsigned char, 64> encoded{};
  const int length = ::EVP_EncodeBlock(encoded.data(), digest.data(), SHA256_DIGEST_LENGTH);
  return "'sha256-" + std::string(encoded.begin(), encoded.begin() + length) + "'";
}

std::string policyOf(const std::string& page) {
  return elementOf(page, "Content-Security-Policy\" content=\"", "\"");
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

}  // namespace

TEST(Page, AllowsItsOwnScriptsAndStyleAlone) {
  const ShotResult result = small::result(4, 3);
  const std::string page = pageOf({result, nullptr, "small"});
  const std::string style = elementOf(page, "<style>", "</style>");
  const std::string libraries = elementOf(page, "<script>", "</script>");
  const std::string script = elementOf(page, "<script type=\"module\">", "</script>");
  EXPECT_GT(libraries.size(), 50'000u);
  EXPECT_EQ(policyOf(page), "default-src 'none'; script-src " + hashOf(libraries) + " " +
                                hashOf(script) + "; style-src " + hashOf(style) +
                                "; img-src data:; base-uri 'none'; form-action 'none'");
  EXPECT_EQ(countOf(page, "<script"), 4u);
  EXPECT_EQ(countOf(page, "</script>"), 4u);
  EXPECT_EQ(countOf(page, "<style"), 1u);
}

// Without what the libraries' scripts and the licences say of where they come from.
TEST(Page, AsksForNothing) {
  const ShotResult result = small::result(4, 3);
  std::string page = pageOf({result, nullptr, "small"});
  for (const std::string_view part : {pageLibraries(), pageScript()})
    page.erase(page.find(part), part.size());
  for (const char* word : {"http:", "https:", "//", " src=", "@import", "url(", "javascript:"})
    EXPECT_EQ(page.find(word), std::string::npos) << word;
  EXPECT_EQ(countOf(page, "href="), 2u);
  EXPECT_EQ(countOf(page, "href=\"data:,\""), 1u);
  EXPECT_EQ(countOf(page, "href=\"#"), 1u);  // a place in the page itself
}

TEST(Page, HoldsTheDataWhateverNamesAreCalled) {
  ShotResult result = small::result(4, 3);
  result.tracks[0].name = "</script><script>alert(1)</script>";
  result.tracks[1].name = "{{script}}";
  const std::string page = pageOf({result, nullptr, "</title><script>alert(2)</script>{{data}}"});
  EXPECT_EQ(countOf(page, "alert("), 2u);  // in the title, and where scripts are off
  EXPECT_EQ(countOf(page, "<script"), 4u);
  EXPECT_EQ(elementOf(page, "<title>", "</title>").rfind("&lt;/title&gt;&lt;script&gt;", 0), 0u);
  const auto data = dataOf(page);
  EXPECT_EQ(data["result"]["tracks"][0]["name"], result.tracks[0].name);
  EXPECT_EQ(data["result"]["tracks"][1]["name"], result.tracks[1].name);
  EXPECT_EQ(data["title"], "</title><script>alert(2)</script>{{data}}");
  EXPECT_TRUE(picturesOf(page).is_null());
}

TEST(Page, HasALanguageAndWordsForBrowsersWithoutScripts) {
  const ShotResult result = small::result(4, 3);
  const std::string page = pageOf({result, nullptr, "small"});
  EXPECT_EQ(page.rfind("<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">", 0),
            0u);
  EXPECT_NE(page.find("<noscript>"), std::string::npos);
  EXPECT_NE(page.find("name=\"viewport\""), std::string::npos);
  EXPECT_EQ(countOf(page, "{{"),
            countOf(std::string(pageLibraries()), "{{") + countOf(std::string(pageScript()), "{{"));
}

TEST(Page, CarriesTheLicenceOfItsLibraries) {
  const ShotResult result = small::result(4, 3);
  EXPECT_NE(pageOf({result, nullptr, ""}).find("Permission is hereby granted, free of charge"),
            std::string::npos);
}

TEST(Page, HoldsPicturesOrAsksForThem) {
  const TemporaryFolder folder;
  for (const int frame : {0, 2})
    writeJpeg(folder / ("p " + std::to_string(frame) + ".jpg"), 40, 30);
  const ShotResult result = small::result(4, 3);
  ShotPictures pictures(PictureFiles(folder / "p %d.jpg"), "p", 0, 2);
  pictures.fit({}, std::nullopt, nullptr);
  const PictureUse inside = {pictures, ""};
  const std::string page = pageOf({result, nullptr, ""}, &inside);
  const auto urls = picturesOf(page);
  ASSERT_EQ(urls.size(), 3u);
  EXPECT_EQ(urls[0].get<std::string>().rfind("data:image/jpeg;base64,/9j/", 0), 0u);
  EXPECT_TRUE(urls[1].is_null());
  EXPECT_EQ(dataOf(page)["pictures"]["frames"], 2);
  EXPECT_EQ(dataOf(page)["pictures"]["missing"], "there is no file for 1 of 3 frames: 1");
  EXPECT_EQ(dataOf(page)["view"]["width"], 40.0);
  EXPECT_NE(policyOf(page).find("img-src data:;"), std::string::npos);
  const PictureUse beside = {pictures, folder / "page.html"};
  const std::string links = pageOf({result, nullptr, ""}, &beside);
  EXPECT_EQ(picturesOf(links)[0], "p%200.jpg");
  EXPECT_EQ(dataOf(links)["pictures"]["linked"], true);
  EXPECT_NE(policyOf(links).find("img-src data: 'self' file:;"), std::string::npos);
}

// Positions that no packing makes small.
TEST(Page, ShowsLessOfWhatWouldBeTooLarge) {
  const ShotResult result = small::result(700, 400);
  Tracks tracks = small::tracks(700, 400);
  unsigned state = 1;
  for (Observation& row : tracks.observations) {
    state = state * 1664525u + 1013904223u;
    row.x += static_cast<double>(state >> 8) * 1e-4;
    row.y -= static_cast<double>(state >> 4) * 1e-5;
  }
  const std::string page = pageOf({result, &tracks, ""});
  EXPECT_LT(page.size(), kMostBytes);
  EXPECT_LT(dataOf(page)["reduced"]["frames"]["shown"].get<int>(), 401);
  EXPECT_LT(dataOf(page)["reduced"]["tracks"]["shown"].get<int>(), 357);
}
