// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/exception.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "tests/support/allocations.h"
#include "tests/support/child.h"
#include "tests/support/reports.h"

namespace {

// The description by what(), released as its owner must.
std::string described(const std::exception& exception) {
  const char* const text = exception.what();
  if (text == nullptr) return "(null)";
  const std::string copy = text;
  std::free(const_cast<char*>(text));
  return copy;
}

std::string nameOf(const LvException& exception) { return exception.className().c_str(); }

const char* const kLongText = "a message that is too long for a string without an allocation";

TEST(LvException, DerivesFromTheStandardException) {
  EXPECT_TRUE((std::is_base_of_v<std::exception, LvException>));
}

TEST(LvException, MatrixErrorAndIllegalArgumentDeriveFromItAndBadIndexFromIllegalArgument) {
  EXPECT_TRUE((std::is_base_of_v<LvException, MMatrixError>));
  EXPECT_TRUE((std::is_base_of_v<LvException, LvIllegalArgumentException>));
  EXPECT_TRUE((std::is_base_of_v<LvIllegalArgumentException, LvBadIndexException>));
  EXPECT_FALSE((std::is_base_of_v<LvIllegalArgumentException, MMatrixError>));
}

TEST(LvException, DerivedClassesAddNoFields) {
  EXPECT_EQ(sizeof(MMatrixError), sizeof(LvException));
  EXPECT_EQ(sizeof(LvIllegalArgumentException), sizeof(LvException));
  EXPECT_EQ(sizeof(LvBadIndexException), sizeof(LvException));
}

TEST(LvException, FieldsAreMessageFileLine) {
  const LvException exception("m");
  const auto at = [&exception](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&exception);
  };
  EXPECT_LT(at(&exception.message), at(&exception.file));
  EXPECT_LT(at(&exception.file), at(&exception.line));
  EXPECT_TRUE((std::is_same_v<decltype(LvException::line), std::int32_t>));
}

TEST(LvException, HasNoLocationByDefault) {
  const LvException exception("m");
  EXPECT_EQ(exception.file.size(), 0u);
  EXPECT_EQ(exception.line, 0);
}

TEST(LvException, EveryClassIsBuiltFromAMessageAlone) {
  EXPECT_STREQ(MMatrixError("m").message.c_str(), "m");
  EXPECT_STREQ(LvIllegalArgumentException("m").message.c_str(), "m");
  EXPECT_STREQ(LvBadIndexException("m").message.c_str(), "m");
  EXPECT_EQ(MMatrixError("m").line, 0);
  EXPECT_EQ(LvIllegalArgumentException("m").line, 0);
  EXPECT_EQ(LvBadIndexException("m").line, 0);
}

TEST(LvException, ClassNames) {
  EXPECT_EQ(nameOf(LvException("")), "LvException");
  EXPECT_EQ(nameOf(LvIllegalArgumentException("")), "LvIllegalArgumentException");
  EXPECT_EQ(nameOf(LvBadIndexException("")), "LvBadIndexException");
}

TEST(LvException, AMatrixErrorNamesItselfAsTheBase) {
  EXPECT_EQ(nameOf(MMatrixError("")), "LvException");
}

TEST(LvException, DescriptionIsClassNameColonMessage) {
  EXPECT_EQ(described(MMatrixError("MMatrix row 5 out of range 0..3")),
            "LvException: MMatrix row 5 out of range 0..3");
  EXPECT_EQ(described(LvBadIndexException("MArray::operator[]")),
            "LvBadIndexException: MArray::operator[]");
}

TEST(LvException, DescriptionWithoutMessageIsTheBareClassName) {
  EXPECT_EQ(described(LvException("")), "LvException");
  EXPECT_EQ(described(LvIllegalArgumentException("")), "LvIllegalArgumentException");
}

TEST(LvException, DescriptionEndsWithFileAndLine) {
  EXPECT_EQ(described(LvException("m", "mod.cpp", 12)), "LvException: m (mod.cpp:12)");
}

TEST(LvException, ANegativeLineIsShown) {
  EXPECT_EQ(described(LvException("m", "mod.cpp", -1)), "LvException: m (mod.cpp:-1)");
}

TEST(LvException, ALineWithoutFileIsShown) {
  EXPECT_EQ(described(LvException("", "", 7)), "LvException (:7)");
}

TEST(LvException, AFileWithoutLineIsNotShown) {
  EXPECT_EQ(described(LvException("m", "mod.cpp", 0)), "LvException: m");
}

TEST(LvException, DescriptionTakesTheClassNameOfADerivedClass) {
  struct Own : LvException {
    Own() : LvException("m") {}
    LvString className() const override { return "Own"; }
  };
  EXPECT_EQ(described(Own()), "Own: m");
}

TEST(LvException, WhatIsANewTextAtEveryCall) {
  const LvException exception("m");
  const char* const first = exception.what();
  const char* const second = exception.what();
  EXPECT_NE(first, second);
  EXPECT_STREQ(first, second);
  std::free(const_cast<char*>(first));
  std::free(const_cast<char*>(second));
}

TEST(LvException, WhatOutlivesTheException) {
  const char* text = nullptr;
  {
    const LvException exception(kLongText);
    text = exception.what();
  }
  EXPECT_EQ(text, std::string("LvException: ") + kLongText);
  std::free(const_cast<char*>(text));
}

TEST(LvException, WhatIsNullWhenMemoryHasRunOut) {
  const LvException exception(kLongText);
  const char* text = nullptr;
  {
    allocations::FailAt fail(1);
    text = exception.what();
    ASSERT_TRUE(fail.failed());
  }
  EXPECT_EQ(text, nullptr);
}

TEST(LvException, WhatLeaksNothingWhicheverAllocationFails) {
  const LvException exception(kLongText, kLongText, 3);
  for (std::size_t k = 1;; ++k) {
    const std::size_t before = allocations::live();
    allocations::FailAt fail(k);
    const char* const text = exception.what();
    EXPECT_EQ(text == nullptr, fail.failed()) << k;
    EXPECT_EQ(allocations::live(), before) << k;
    std::free(const_cast<char*>(text));
    if (!fail.failed()) break;
    ASSERT_LT(k, 100u);
  }
}

TEST(LvException, ReportWritesTheDescriptionAndALineEndToStandardError) {
  const ChildRun run =
      runInChild([] { LvBadIndexException("MArray::operator[]", "a.cpp", 4).report(); });
  EXPECT_TRUE(run.exited);
  EXPECT_EQ(run.err, "LvBadIndexException: MArray::operator[] (a.cpp:4)\n");
  EXPECT_EQ(run.out, "");
}

TEST(LvException, ReportOfABareMatrixErrorIsTheClassName) {
  EXPECT_EQ(runInChild([] { MMatrixError("").report(); }).err, "LvException\n");
}

TEST(LvException, CanBeCaughtByEveryBase) {
  EXPECT_THROW(throw LvBadIndexException("m"), LvIllegalArgumentException);
  EXPECT_THROW(throw LvBadIndexException("m"), LvException);
  EXPECT_THROW(throw MMatrixError("m"), std::exception);
}

TEST(LvException, CopiesAreIndependent) {
  LvException exception(kLongText, "f", 1);
  const LvException copy = exception;
  exception.message.append("!");
  EXPECT_STREQ(copy.message.c_str(), kLongText);
  EXPECT_EQ(copy.line, 1);
}

#if defined(__GNUC__) && defined(__x86_64__)
// A pointer to a virtual member function holds 1 + the offset of its slot here.
template <class Member>
std::size_t slotOf(Member member) {
  std::size_t value = 0;
  static_assert(sizeof member >= sizeof value);
  std::memcpy(&value, &member, sizeof value);
  return (value - 1) / sizeof(void*);
}

TEST(LvException, VtableHoldsDestructorsThenWhatThenClassNameThenReport) {
  EXPECT_EQ(slotOf(&LvException::what), 2u);
  EXPECT_EQ(slotOf(&LvException::className), 3u);
  EXPECT_EQ(slotOf(&LvException::report), 4u);
}
#endif

TEST(MatrixError, ThrowsTheFormattedMessage) {
  EXPECT_EQ(thrownMessage([] { MMatrixError::err("MMatrix row %d out of range 0..%d", 5, 3); }),
            "MMatrix row 5 out of range 0..3");
}

TEST(MatrixError, ThrownErrorHasNoLocation) {
  try {
    MMatrixError::err("m");
    FAIL() << "nothing was thrown";
  } catch (const MMatrixError& error) {
    EXPECT_EQ(error.file.size(), 0u);
    EXPECT_EQ(error.line, 0);
  }
}

TEST(MatrixError, FormatsExtremeIntegers) {
  EXPECT_EQ(thrownMessage([] { MMatrixError::err("%d %d", INT32_MIN, INT32_MAX); }),
            "-2147483648 2147483647");
}

TEST(MatrixError, CutsATextThatDoesNotFit) {
  const std::string wide(5000, 'w');
  const std::string message = thrownMessage([&wide] { MMatrixError::err("%s", wide.c_str()); });
  EXPECT_EQ(message, std::string(999, 'w'));
}

TEST(MatrixError, KeepsPercentSignsOfArguments) {
  EXPECT_EQ(thrownMessage([] { MMatrixError::err("%s", "%d%n"); }), "%d%n");
}

TEST(MatrixError, NoHandlerIsInstalledAtFirst) { EXPECT_EQ(MMatrixError::sHandler, nullptr); }

int handlerCalls = 0;
std::string handlerText;
void countingHandler(const char* text) {
  ++handlerCalls;
  handlerText = text;
}
void otherHandler(const char*) {}

TEST(MatrixErrorHandler, IsCalledOnceWithTheTextAndErrReturns) {
  handlerCalls = 0;
  MMatrixError::setErrorHandler(&countingHandler);
  EXPECT_NO_THROW(MMatrixError::err("MVector index %d out of range %d", 9, 8));
  MMatrixError::setErrorHandler(nullptr);
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(handlerText, "MVector index 9 out of range 8");
}

TEST(MatrixErrorHandler, SetReturnsThePreviousOne) {
  EXPECT_EQ(MMatrixError::setErrorHandler(&countingHandler), nullptr);
  EXPECT_EQ(MMatrixError::setErrorHandler(&otherHandler), &countingHandler);
  EXPECT_EQ(MMatrixError::sHandler, &otherHandler);
  EXPECT_EQ(MMatrixError::setErrorHandler(nullptr), &otherHandler);
  EXPECT_EQ(MMatrixError::sHandler, nullptr);
}

TEST(MatrixErrorHandler, NullRestoresThrowing) {
  MMatrixError::setErrorHandler(&countingHandler);
  MMatrixError::setErrorHandler(nullptr);
  EXPECT_THROW(MMatrixError::err("m"), MMatrixError);
}

TEST(MatrixErrorHandler, MayThrowItself) {
  MMatrixError::setErrorHandler([](const char*) { throw 42; });
  EXPECT_THROW(MMatrixError::err("m"), int);
  MMatrixError::setErrorHandler(nullptr);
}

TEST(MatrixErrorHandler, MayBeReplacedFromWithin) {
  MMatrixError::setErrorHandler([](const char*) { MMatrixError::setErrorHandler(nullptr); });
  EXPECT_NO_THROW(MMatrixError::err("m"));
  EXPECT_THROW(MMatrixError::err("m"), MMatrixError);
}

TEST(MatrixErrorHandler, CallAllocatesNothing) {
  MMatrixError::setErrorHandler(&otherHandler);
  const std::size_t before = allocations::made();
  MMatrixError::err("MMatrix col mismatch %d != %d", 1000000, 2000000);
  EXPECT_EQ(allocations::made(), before);
  MMatrixError::setErrorHandler(nullptr);
}

TEST(MatrixError, LeaksNothingWhicheverAllocationFails) {
  const std::size_t failures = allocations::expectNoLeakOnAnyFailure([] {
    try {
      MMatrixError::err("%s", kLongText);
    } catch (const MMatrixError&) {
    }
  });
  EXPECT_GE(failures, 1u);
}

// The environment is looked at once per process, so each of these runs in a process of its own
// that has reported nothing yet.
class MatrixErrorEchoDeathTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void reportAndCatch(int number) {
    try {
      MMatrixError::err("message %d", number);
    } catch (const MMatrixError&) {
      return;
    }
    std::abort();
  }
};

TEST_F(MatrixErrorEchoDeathTest, GoesToStandardErrorWhenTheVariableIsSet) {
  EXPECT_EXIT(
      {
        setenv("QXEXCEPTION", "1", 1);
        reportAndCatch(1);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq("Matrix exception - message 1\n"));
}

TEST_F(MatrixErrorEchoDeathTest, IsTurnedOnByAnEmptyValue) {
  EXPECT_EXIT(
      {
        setenv("QXEXCEPTION", "", 1);
        reportAndCatch(1);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq("Matrix exception - message 1\n"));
}

TEST_F(MatrixErrorEchoDeathTest, IsSilentWhenTheVariableIsUnset) {
  EXPECT_EXIT(
      {
        unsetenv("QXEXCEPTION");
        reportAndCatch(1);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq(""));
}

TEST_F(MatrixErrorEchoDeathTest, SettingAfterTheFirstErrorHasNoEffect) {
  EXPECT_EXIT(
      {
        unsetenv("QXEXCEPTION");
        reportAndCatch(1);
        setenv("QXEXCEPTION", "1", 1);
        reportAndCatch(2);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq(""));
}

TEST_F(MatrixErrorEchoDeathTest, ClearingAfterTheFirstErrorHasNoEffect) {
  EXPECT_EXIT(
      {
        setenv("QXEXCEPTION", "1", 1);
        reportAndCatch(1);
        unsetenv("QXEXCEPTION");
        reportAndCatch(2);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0),
      testing::Eq("Matrix exception - message 1\nMatrix exception - message 2\n"));
}

TEST_F(MatrixErrorEchoDeathTest, AHandledErrorDoesNotLookTheVariableUp) {
  EXPECT_EXIT(
      {
        unsetenv("QXEXCEPTION");
        MMatrixError::setErrorHandler(&otherHandler);
        MMatrixError::err("handled");
        MMatrixError::setErrorHandler(nullptr);
        setenv("QXEXCEPTION", "1", 1);
        reportAndCatch(2);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq("Matrix exception - message 2\n"));
}

TEST_F(MatrixErrorEchoDeathTest, AHandledErrorIsNotEchoed) {
  EXPECT_EXIT(
      {
        setenv("QXEXCEPTION", "1", 1);
        MMatrixError::setErrorHandler(&otherHandler);
        MMatrixError::err("handled");
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq(""));
}

TEST_F(MatrixErrorEchoDeathTest, DoesNotConcernOtherExceptions) {
  EXPECT_EXIT(
      {
        setenv("QXEXCEPTION", "1", 1);
        try {
          throw LvBadIndexException("m");
        } catch (const LvException&) {
        }
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::Eq(""));
}

}  // namespace
