// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_FARM_H
#define SHOW_FARM_H

#include <cornerpin/shot.h>

#include <cstddef>
#include <string>
#include <vector>

#include "show/output_folder.h"
#include "show/show_run.h"

namespace cornerpin {

/// Shots that stand side by side, and the command that does them.
struct Piece {
  std::string key;  ///< SHA-256 of the command and of the tasks' keys
  std::size_t shots = 0;
  std::string command;  ///< a line as a shell takes it
};

/// Pieces of `chunk` shots at most. The command is `start` and "--only" with the shots.
std::vector<Piece> piecesOf(const std::vector<OpenShot>& shots, std::size_t chunk,
                            const std::string& start);

/// Has the workers of a scheduler of dask.distributed run the pieces' commands, through `python3`
/// as the path has it. Returns what is to be told of commands that failed, whose shots are still
/// open; empty where none did.
///
/// Throws `std::runtime_error` where the scheduler cannot be used or goes away, `Interrupted`, and
/// `shot::Cancelled` where the progress says so.
std::string runOnFarm(const std::string& scheduler, const std::vector<Piece>& pieces,
                      OutputFolder& folder, const shot::Progress& progress);

}  // namespace cornerpin

#endif
