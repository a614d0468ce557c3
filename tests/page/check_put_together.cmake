# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=report -DFOLDER=folder -P check_put_together.cmake
#
# Puts pages together out of small modules in FOLDER: what comes out has to be the script that is
# expected, and what cannot be joined is refused with the reason.
cmake_minimum_required(VERSION 3.20)

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
file(COPY "${SOURCE}/vendor" "${SOURCE}/template.html" "${SOURCE}/style.css" DESTINATION "${FOLDER}")

# Joins a.js and b.js: `script` is what comes out, `problem` what was said.
function(join a b)
  file(WRITE "${FOLDER}/a.js" "${a}")
  file(WRITE "${FOLDER}/b.js" "${b}")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DSOURCE=${FOLDER}" "-DMODULES=a.js b.js"
            "-DPARTS=${FOLDER}/parts.cpp" -P "${SOURCE}/put_together.cmake"
    RESULT_VARIABLE failed ERROR_VARIABLE problem)
  set(script "")
  if(NOT failed)
    file(READ "${FOLDER}/parts.cpp" source)
    string(REGEX REPLACE ".*kScript\\[\\] = {([^}]*)}.*" "\\1" bytes "${source}")
    string(REGEX REPLACE "[^0-9a-f]" "" bytes "${bytes}")
    set(script "${bytes}" PARENT_SCOPE)
  endif()
  # A message of CMake is broken into lines.
  string(REGEX REPLACE "[ \n]+" " " problem "${problem}")
  set(problem "${problem}" PARENT_SCOPE)
endfunction()

function(expect_script a b expected)
  join("${a}" "${b}")
  string(HEX "${expected}" bytes)
  if(NOT script STREQUAL bytes)
    message(SEND_ERROR "other than expected:\n${expected}\n${problem}${script}\n${bytes}")
  endif()
endfunction()

function(expect_refusal a b reason)
  join("${a}" "${b}")
  string(FIND "${problem}" "${reason}" at)
  if(at EQUAL -1)
    message(SEND_ERROR "\"${reason}\" was to be said, not: ${problem}")
  endif()
endfunction()

# Brackets, semicolons, backslashes and accents are carried as they are.
expect_script(
  "// one\nexport const a = [1, 2]; // ;;\nexport function as_is() {\n  return \"\\n[ü]\";\n}\n"
  "import { a } from \"./a.js\";\nimport {\n  as_is,\n} from \"./a.js\";\n\nexport class B {}\nlet c = a[0];\n"
  "\n\n// one\nconst a = [1, 2]; // ;;\nfunction as_is() {\n  return \"\\n[ü]\";\n}\n\n\nclass B {}\nlet c = a[0];\n")
expect_script("export async function f() {}\n" "const exported = 1;\nconst importing = 2;\n"
              "\n\nasync function f() {}\n\nconst exported = 1;\nconst importing = 2;\n")

expect_refusal("const a = 1;\n" "import { a as b } from \"./a.js\";\n" "a name from a.js is renamed")
expect_refusal("import { b } from \"./b.js\";\n" "export const b = 1;\n"
               "a.js: b.js does not stand before it")
expect_refusal("const a = 1;\n" "import a from \"./a.js\";\n" "is wanted, not: import a from")
expect_refusal("const a = 1;\n" "import * as a from \"./a.js\";\n" "is wanted, not: import * as a")
expect_refusal("const a = 1;\n" "import { a } from \"elsewhere\";\n" "is wanted, not: import { a }")
expect_refusal("const a = 1;\n" "import \"./a.js\";\n" "is wanted, not: import \"./a.js\"")
expect_refusal("const a = 1;\n" "export default a;\n" "not: export default a;")
expect_refusal("const a = 1;\n" "const b = 1;\nexport { b };\n" "not: export { b };")
expect_refusal("const a = 1;\n" "function a() {}\n" "b.js: a is declared twice")
expect_refusal("const a = \"</script>\";\n" "" "\"</script\" cannot stand in a page's script")
expect_refusal("const a = \"<!--\";\n" "" "\"<!--\" cannot stand in a page's script")

file(APPEND "${FOLDER}/template.html" "{{more}}")
expect_refusal("const a = 1;\n" "" "it has places for data;libraries;more;pictures;")
