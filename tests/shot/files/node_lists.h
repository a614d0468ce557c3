// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_NODE_LISTS_H
#define TESTS_SHOT_FILES_NODE_LISTS_H

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace made {

/// A script as nested lists, by a plain recursive reader. Lines do not end anything in it, so that
// it takes only scripts whose knobs have one value each.
struct List {
  std::string word;
  bool isList = false;
  std::vector<List> items;

  const List& at(std::size_t i) const { return items.at(i); }
  // The value behind a word among the items.
  const List& of(const std::string& knob) const {
    for (std::size_t i = 0; i + 1 < items.size(); i += 2) {
      if (items[i].word == knob) return items[i + 1];
    }
    throw std::runtime_error("no " + knob);
  }
};

inline List listIn(const std::string& text, std::size_t& at) {
  List list;
  list.isList = true;
  while (at < text.size()) {
    const char c = text[at++];
    if (c == '}') return list;
    if (c == ' ' || c == '\n' || c == '\r') continue;
    if (c == '{') {
      list.items.push_back(listIn(text, at));
      continue;
    }
    List item;
    if (c == '"') {
      for (; text.at(at) != '"'; ++at) {
        if (text[at] == '\\') ++at;
        item.word += text[at];
      }
      ++at;
    } else {
      --at;
      while (at < text.size() && std::string(" \n{}").find(text[at]) == std::string::npos)
        item.word += text[at++];
    }
    list.items.push_back(item);
  }
  return list;
}

inline List parsed(const std::string& text) {
  std::istringstream lines(text);
  std::string line;
  std::string plain;
  while (std::getline(lines, line)) {
    if (line[0] != '#') plain += line + "\n";
  }
  std::size_t at = 0;
  return listIn(plain, at);
}

// The nodes of a script: what stands in braces behind a word.
inline std::vector<List> nodesIn(const std::string& text, const std::string& type) {
  const List all = parsed(text);
  std::vector<List> nodes;
  for (std::size_t i = 1; i < all.items.size(); ++i) {
    if (all.items[i - 1].word == type && all.items[i].isList) nodes.push_back(all.items[i]);
  }
  return nodes;
}

using Keys = std::map<int, double>;

// Of a curve that tells every frame.
inline Keys keysOf(const List& curve) {
  Keys keys;
  EXPECT_EQ(curve.at(0).word, "curve");
  for (std::size_t i = 1; i < curve.items.size();) {
    if (curve.at(i).word.size() == 1 && std::isalpha(curve.at(i).word[0]) != 0) {
      ++i;
      continue;
    }
    EXPECT_EQ(curve.at(i).word.at(0), 'x');
    EXPECT_EQ(curve.at(i + 1).word.find('e'), std::string::npos);
    const int frame = std::stoi(curve.at(i).word.substr(1));
    EXPECT_EQ(keys.count(frame), 0u);
    keys[frame] = std::stod(curve.at(i + 1).word);
    i += 2;
  }
  return keys;
}

}  // namespace made

#endif
