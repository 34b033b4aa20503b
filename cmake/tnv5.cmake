# Helpers shared by the build files.

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
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_TO_ASCII
                                               QT_DISABLE_DEPRECATED_BEFORE=0x060400)
endfunction()

# A test program: tnv5_test(NAME name SOURCES a.cpp ... LIBS lib ...).
function(tnv5_test)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  target_link_libraries(${ARG_NAME} PRIVATE tnv5::testing tnv5_test_support GTest::gtest ${ARG_LIBS})
  target_include_directories(${ARG_NAME} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  tnv5_flags(${ARG_NAME})
  # What is tested is optimised, the checks around it need not be: they compile in half the time.
  target_compile_options(${ARG_NAME} PRIVATE -O0 ${TNV5_TEST_HEADER_FLAGS})
  target_precompile_headers(${ARG_NAME} REUSE_FROM tnv5_test_headers)
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT 300)
endfunction()
