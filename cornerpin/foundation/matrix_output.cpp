// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix_output.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace {

std::string cellText(int value) { return std::to_string(value); }

std::string cellText(double value) {
  char text[512];  // the largest double takes 317 characters
  std::snprintf(text, sizeof text, "%f", value);
  std::string cell = text;
  while (cell.size() > 1 && cell.back() == '0') cell.pop_back();
  return cell;
}

struct Column {
  std::vector<std::string> cells;
  std::size_t width = 0;  // of the longest cell
};

template <class T>
std::vector<Column> columnsOf(const MGenMatrix<T>& m) {
  std::vector<Column> columns(static_cast<std::size_t>(m.colCount()));
  for (int j = 0; j < m.colCount(); ++j) {
    Column& column = columns[static_cast<std::size_t>(j)];
    for (int i = 0; i < m.rowCount(); ++i) {
      column.cells.push_back(cellText(m(i, j)));
      column.width = std::max(column.width, column.cells.back().size());
    }
  }
  return columns;
}

template <class T>
std::ostream& write(std::ostream& os, const MGenMatrix<T>& m) {
  if (m.rowCount() == 0) return os;
  const std::vector<Column> columns = columnsOf(m);
  for (int i = 0; i < m.rowCount(); ++i) {
    os << (i == 0 ? "[" : " ") << "[ ";
    for (const Column& column : columns) {
      const std::string& cell = column.cells[static_cast<std::size_t>(i)];
      os << std::string(column.width - cell.size(), ' ') << cell << ' ';
    }
    os << ']';
    if (i == m.rowCount() - 1) os << ']';
    os << std::endl;
  }
  return os;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const MGenMatrix<double>& m) { return write(os, m); }
std::ostream& operator<<(std::ostream& os, const MGenMatrix<int>& m) { return write(os, m); }
