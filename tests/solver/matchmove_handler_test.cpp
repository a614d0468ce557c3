// SPDX-License-Identifier: BSD-3-Clause

// Shots whose scene is changed by the error handler in the middle of a solve.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/solver/lm_solver.h"
#include "cornerpin/solver/matchmove_problem.h"
#include "tests/solver/shots.h"
#include "tests/support/scene.h"

namespace {

using scenes::transformOf;
using shots::makeSingular;
using shots::panningShot;
using Matrix = MGenMatrix<float>;

// What is done about the n-th report of a solve, counted from 1.
using Change = std::function<void(MMatchmove&, int)>;

// Calls a change for every report while it lives.
class ChangingHandler {
 public:
  ChangingHandler(MMatchmove& scene, const Change& change) {
    action() = [&scene, change, this] { change(scene, ++reports); };
    MMatrixError::setErrorHandler([](const char*) { action()(); });
  }
  ~ChangingHandler() {
    MMatrixError::setErrorHandler(nullptr);
    action() = nullptr;
  }
  ChangingHandler(const ChangingHandler&) = delete;
  ChangingHandler& operator=(const ChangingHandler&) = delete;

  int reports = 0;

 private:
  static std::function<void()>& action() {
    static std::function<void()> current;
    return current;
  }
};

// The frames' problems handed to the general solver, one after the other.
void solveByProblem(MMatchmove& scene, int frame) {
  MMatchmoveProblem problem(&scene, frame);
  if (problem.activeCount == 0) return;
  MLMSolver solver;
  solver.setProblem(&problem);
  solver.setGoal(problem.getGoal());
  MGenVector<float> start;
  problem.xToVector(scene.outputs[frame], start);
  solver.setState(start);
  solver.solve();
  problem.xToMatrix(solver.getState(), scene.outputs[frame]);
}

void solveByProblems(MMatchmove& scene) {
  scene.setupOutputs();
  scene.solveBaseFrame();
  for (int f = scene.baseFrame + 1; f < scene.frameCount; ++f) {
    scene.outputs[f] = scene.outputs[f - 1].copy(Matrix::ColumnMajor);
    solveByProblem(scene, f);
  }
  for (int f = scene.baseFrame - 1; f >= 0; --f) {
    scene.outputs[f] = scene.outputs[f + 1].copy(Matrix::ColumnMajor);
    solveByProblem(scene, f);
  }
}

template <class Solve>
std::string thrownMessage(const Solve& solve) {
  try {
    solve();
  } catch (const LvException& e) {
    return e.message.c_str();
  }
  return "";
}

// Nine frames from frame 4; frames 2 and 6 have a singular system, and so report.
MMatchmove shotWithTwoSingularFrames() {
  MMatchmove scene = panningShot(9, 4);
  makeSingular(scene, 2);
  makeSingular(scene, 6);
  return scene;
}

// Solves a shot twice, changed in the same way by the handler, and compares every frame.
void expectTheFramesOwnProblems(const Change& change, const std::string& thrown = "") {
  MMatchmove scene = shotWithTwoSingularFrames();
  MMatchmove plain = shotWithTwoSingularFrames();
  int reports = 0;
  {
    const ChangingHandler handler(plain, change);
    EXPECT_EQ(thrownMessage([&] { solveByProblems(plain); }), thrown);
    reports = handler.reports;
  }
  const ChangingHandler handler(scene, change);
  EXPECT_EQ(thrownMessage([&] { scene.solve(); }), thrown);
  EXPECT_GT(reports, 1);
  EXPECT_EQ(handler.reports, reports);
  ASSERT_EQ(scene.outputs.size(), plain.outputs.size());
  for (int f = 0; f < scene.outputs.size(); ++f) {
    EXPECT_TRUE(scenes::sameBits(transformOf(scene.outputs[f]), transformOf(plain.outputs[f])))
        << "frame " << f;
  }
}

// The same numbers, a little apart, in storage of their own: the old one is freed.
void replaceStorage(MMatchmove& scene, int report) {
  const float factor = 1 + 0.01f * static_cast<float>(report);
  for (int t = 0; t < scene.tracks.size(); ++t) {
    MMatchmoveTrack& track = scene.tracks[t];
    track.weights = track.weights.copy();
    track.positions = track.positions.copy(Matrix::ColumnMajor);
    for (int f = 0; f < track.weights.length; ++f) {
      track.weights[f] *= factor;
      track.positions(f, t % 2) *= factor;
    }
  }
}

TEST(MMatchmoveHandler, MayReplaceTheStorageOfTheTracks) {
  expectTheFramesOwnProblems(replaceStorage);
}

TEST(MMatchmoveHandler, ThatReplacesTheStorageChangesTheFramesThatFollow) {
  MMatchmove untouched = shotWithTwoSingularFrames();
  MMatchmove scene = shotWithTwoSingularFrames();
  {
    const ChangingHandler handler(untouched, [](MMatchmove&, int) {});
    untouched.solve();
  }
  const ChangingHandler handler(scene, replaceStorage);
  scene.solve();
  for (const int f : {4, 5})
    EXPECT_EQ(transformOf(scene.outputs[f]), transformOf(untouched.outputs[f]));
  for (const int f : {0, 1, 3, 7, 8}) {
    EXPECT_NE(transformOf(scene.outputs[f]), transformOf(untouched.outputs[f])) << f;
  }
}

TEST(MMatchmoveHandler, MayReplaceAllTracks) {
  expectTheFramesOwnProblems([](MMatchmove& scene, int report) {
    scene.tracks = panningShot(9, 4, 0.03125f * static_cast<float>(report)).tracks;
    makeSingular(scene, 2);
    makeSingular(scene, 6);
  });
}

TEST(MMatchmoveHandler, MayReplaceTheDataOfTheBaseFrame) {
  expectTheFramesOwnProblems([](MMatchmove& scene, int report) {
    scene.basePositions = scene.basePositions.copy(Matrix::ColumnMajor);
    scene.baseWeights = scene.baseWeights.copy();
    scene.basePositions(0, 0) += 0.0625f;
    scene.baseWeights[report % 5] = static_cast<float>(report % 3);
  });
}

TEST(MMatchmoveHandler, MayAddTracks) {
  expectTheFramesOwnProblems([](MMatchmove& scene, int report) {
    if (report > 4) return;
    const int count = scene.tracks.size();
    const MArray<MMatchmoveTrack> more = panningShot(9, 4, 0.15625f).tracks;
    scene.tracks.resize(2 * count);
    for (int t = 0; t < count; ++t) scene.tracks[count + t] = more[t % 6];
    scene.setupOutputs();
    for (int t = 0; t < count; ++t) {
      scene.baseWeights[count + t] = 1;
      for (int c = 0; c < 2; ++c) scene.basePositions(count + t, c) = more[t % 6].positions(4, c);
    }
  });
}

TEST(MMatchmoveHandler, MayTakeTracksAway) {
  const auto takeAway = [](MMatchmove& scene, int) {
    if (scene.tracks.size() == 6) scene.tracks.resize(5);
  };
  expectTheFramesOwnProblems(takeAway, "MArray::operator[]");
  expectTheFramesOwnProblems([&](MMatchmove& scene, int report) {
    takeAway(scene, report);
    scene.trackCount = 5;
  });
}

TEST(MMatchmoveHandler, MayReplaceTheOutputs) {
  expectTheFramesOwnProblems([](MMatchmove& scene, int report) {
    const MArray<Matrix> shared = scene.outputs;
    scene.outputs.resize(scene.outputs.size() + 1);
    for (int f = 0; f < shared.size(); ++f) {
      if (report % 2 == 0) scene.outputs[f] = shared[f].copy(Matrix::RowMajor);
    }
  });
}

TEST(MMatchmoveHandler, MaySolveTheSceneItself) {
  expectTheFramesOwnProblems([](MMatchmove& scene, int report) {
    if (report == 2) scene.solveFrame(7);
  });
}

}  // namespace
