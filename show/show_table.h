// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOW_TABLE_H
#define SHOW_SHOW_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "show/output_folder.h"
#include "show/show.h"
#include "show/task_record.h"

namespace cornerpin {

/// What became of the shots of a batch, in their order.
struct ShowTable {
  std::vector<TaskRecord> records;
  std::size_t count(ShotState state) const;
};

/// Reads the records of the shots from the first to the last. Throws `shot::InputError` for one
/// that is not there.
ShowTable readTable(const Show& show, const OutputFolder& folder, std::size_t first,
                    std::size_t last);

/// All shots with what became of them, as JSON (docs/batch.md).
std::string showText(const ShowTable& table, const shot::Version& program);

/// The worst first: those that failed, those of which nothing is known, those whose corners may be
/// farther off; those alike in their order.
std::vector<const TaskRecord*> worstFirst(const ShowTable& table);

/// What a shot came to, in a few words: "27.8 px, 15 of 142 frames doubtful".
std::string shortText(const TaskRecord& record);

/// How many shots are solved, and which are the worst, as lines for people.
std::string summaryOf(const ShowTable& table);

}  // namespace cornerpin

#endif
