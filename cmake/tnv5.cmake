# Helpers shared by the build files.

# Seconds until a test counts as hanging: far more than the longest takes, so that a busy machine fails none.
set(TNV5_TEST_TIMEOUT 1200)

# The flags of every target of the project.
function(tnv5_flags target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
  if(TNV5_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(TNV5_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${TNV5_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${TNV5_SANITIZE})
  endif()
  # What the fuzz targets search through counts its branches; counting in the tests around it takes time for nothing.
  if(TNV5_FUZZ AND NOT TNV5_SANITIZE MATCHES "fuzzer" AND CMAKE_CURRENT_SOURCE_DIR MATCHES "/(src|tests/fuzz)(/|$)")
    target_compile_options(${target} PRIVATE -fsanitize-coverage=inline-8bit-counters,pc-table)
  endif()
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_TO_ASCII
                                               QT_DISABLE_DEPRECATED_BEFORE=0x060400)
endfunction()

# Headers of Qt and the library that many files include, compiled once: tnv5_headers(name LIBS ... HEADERS ...) makes
# them, tnv5_use_headers(target name) uses them. A file includes what it uses all the same.
function(tnv5_headers name)
  if(NOT TNV5_PRECOMPILE)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "LIBS;HEADERS;OPTIONS" ${ARGN})
  file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
  add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS})
  tnv5_flags(${name})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND ARG_OPTIONS -fpch-preprocess) # so that ccache can work with precompiled headers
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    list(APPEND ARG_OPTIONS "SHELL:-Xclang -fno-pch-timestamp")
  endif()
  target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
  set_target_properties(${name} PROPERTIES TNV5_OPTIONS "${ARG_OPTIONS}")
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

function(tnv5_use_headers target name)
  if(TARGET ${name})
    get_target_property(options ${name} TNV5_OPTIONS)
    target_compile_options(${target} PRIVATE ${options})
    target_precompile_headers(${target} REUSE_FROM ${name})
  endif()
endfunction()

# Puts those of the sources together to one that are nothing but an unnamed namespace; the others stay as they are.
function(tnv5_unit name sources)
  set(together "")
  set(alone "")
  foreach(source IN LISTS ${sources})
    cmake_path(ABSOLUTE_PATH source)
    file(READ ${source} text)
    if(text MATCHES "\nnamespace {\n" AND text MATCHES "\n} // namespace\n(\n*} // namespace [^\n]*\n)*$")
      list(APPEND together ${source})
    else()
      list(APPEND alone ${source})
    endif()
  endforeach()
  set(unit ${CMAKE_CURRENT_BINARY_DIR}/${name}_unit.cpp)
  add_custom_command(OUTPUT ${unit} DEPENDS ${together} ${PROJECT_SOURCE_DIR}/cmake/unit.awk VERBATIM
    COMMAND awk -f ${PROJECT_SOURCE_DIR}/cmake/unit.awk ${together} > ${unit})
  set(${sources} ${alone} ${unit} PARENT_SCOPE)
endfunction()

# Compiles the files of a room at once, where that is asked for: less to do from nothing. What the unnamed
# namespaces of a room name must be unique in it then; files for which it is not are named behind APART, by an expression.
function(tnv5_rooms target)
  if(NOT TNV5_UNITY_ROOMS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "APART" "" ${ARGN})
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    if(NOT source MATCHES "\\.cpp$" OR (ARG_APART AND source MATCHES "/(${ARG_APART})\\.cpp$"))
      continue()
    endif()
    cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH room)
    cmake_path(GET room FILENAME room)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

# A test program: tnv5_test(NAME name [SOURCES a.cpp ...] [LIBS lib ...]); without SOURCES, all of the folder.
function(tnv5_test)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
  if(NOT ARG_SOURCES)
    file(GLOB ARG_SOURCES CONFIGURE_DEPENDS *.cpp)
  endif()
  if(TNV5_UNITY)
    tnv5_unit(${ARG_NAME} ARG_SOURCES)
  endif()
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  set_target_properties(${ARG_NAME} PROPERTIES UNITY_BUILD ${TNV5_UNITY} UNITY_BUILD_BATCH_SIZE 0)
  target_link_libraries(${ARG_NAME} PRIVATE tnv5::testing tnv5_test_support GTest::gtest ${ARG_LIBS})
  target_include_directories(${ARG_NAME} PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  tnv5_flags(${ARG_NAME})
  tnv5_use_headers(${ARG_NAME} tnv5_test_headers)
  # What is tested is optimised, the checks around it need not be: they compile in half the time. Sanitizers make
  # them so slow that it does not pay.
  if(NOT TNV5_SANITIZE)
    target_compile_options(${ARG_NAME} PRIVATE -O0)
  endif()
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT ${TNV5_TEST_TIMEOUT})
endfunction()
