# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=folder -DMODULES="a.js b.js" -DPARTS=file -P put_together.cmake
#
# Writes the C++ source that holds what every page is made of (shot/report/page_parts.h).
#
# The modules become one script, in their order: what they import from one another is left out, and
# so is `export` before what they declare. That needs modules that import each name as it is, from
# modules before them, and that do not declare a name twice between them; others are refused.
cmake_minimum_required(VERSION 3.20)

function(refuse file text)
  message(FATAL_ERROR "${SOURCE}/${file}: ${text}")
endfunction()

# A file's text, which ends no element and no comment of the page before its time.
function(read_text file result)
  file(READ "${SOURCE}/${file}" text)
  string(TOLOWER "${text}" lower)
  if(lower MATCHES "</(script|style)|<!--|\r")
    refuse("${file}" "\"${CMAKE_MATCH_0}\" cannot stand in a page's script or style")
  endif()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The names that a script declares outside of all braces.
function(names_in text result)
  set(declaration "\n(export )?(const|let|class|function|async function) +[A-Za-z0-9_$]+")
  string(REGEX MATCHALL "${declaration}" names "${text}")
  list(TRANSFORM names REPLACE "^.* " "")
  set(${result} "${names}" PARENT_SCOPE)
endfunction()

set(script "\n")
set(before "")
set(declared "")
string(REPLACE " " ";" MODULES "${MODULES}")
foreach(module IN LISTS MODULES)
  read_text("${module}" text)
  set(text "\n${text}")
  set(import "\nimport *{[^}]*} *from \"\\./([a-z_]+\\.js)\"")
  string(REGEX MATCHALL "${import}" imports "${text}")
  foreach(one IN LISTS imports)
    string(REGEX MATCH "[a-z_]+\\.js" from "${one}")
    if(one MATCHES "[^A-Za-z0-9_$]as[^A-Za-z0-9_$]")
      refuse("${module}" "a name from ${from} is renamed: import it as it is")
    elseif(NOT from IN_LIST before)
      refuse("${module}" "${from} does not stand before it in report/CMakeLists.txt")
    endif()
  endforeach()
  string(REGEX REPLACE "${import};" "" text "${text}")
  if(text MATCHES "\nimport[^a-zA-Z0-9_$(][^\n]*")
    refuse("${module}" "\"import { name } from \"./module.js\";\" is wanted, not:${CMAKE_MATCH_0}")
  endif()
  names_in("${text}" names)
  foreach(name IN LISTS names)
    if(name IN_LIST declared)
      refuse("${module}" "${name} is declared twice, here or in a module before it")
    endif()
    list(APPEND declared "${name}")
  endforeach()
  string(REGEX REPLACE "\nexport (const|let|class|function|async function) " "\n\\1 " text "${text}")
  if(text MATCHES "\nexport[^a-zA-Z0-9_$][^\n]*")
    refuse("${module}" "\"export\" is wanted before a declaration alone, not:${CMAKE_MATCH_0}")
  endif()
  list(APPEND before "${module}")
  string(APPEND script "${text}")
endforeach()

read_text(vendor/uPlot/LICENSE licence)
read_text(vendor/uPlot/uPlot.iife.min.js plots)
read_text(vendor/uPlot/uPlot.min.css plots_style)
read_text(style.css style)
file(READ "${SOURCE}/template.html" template)

# Every place of the template has something to fill it, and the other way round.
set(known data libraries pictures policy script style title)
string(REGEX MATCHALL "{{[^}]*}}" places "${template}")
list(TRANSFORM places REPLACE "[{}]" "")
list(REMOVE_DUPLICATES places)
list(SORT places)
if(NOT places STREQUAL known)
  refuse(template.html "it has places for ${places}, not for ${known}")
endif()

# Bytes one by one: of literals, compilers limit the length.
set(source "// SPDX-License-Identifier: BSD-3-Clause\n#include \"shot/report/page_parts.h\"\n\n")
function(add_part name text)
  file(WRITE "${PARTS}.text" "${text}")
  file(READ "${PARTS}.text" bytes HEX)
  file(REMOVE "${PARTS}.text")
  string(REGEX REPLACE "(........................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND source "namespace {\nconstexpr char k${name}[] = {\n${bytes}};\n}\n"
                       "std::string_view cornerpin::page${name}() {\n"
                       "  return {k${name}, sizeof(k${name})};\n}\n\n")
  set(source "${source}" PARENT_SCOPE)
endfunction()
add_part(Template "${template}")
add_part(Style "${plots_style}\n${style}")
add_part(Libraries "\n/*!\n${licence}\n*/\n${plots}")
add_part(Script "${script}")
file(WRITE "${PARTS}" "${source}")
