# What can be said of the sources without running them. Included from this folder's list.
set(lint_folder "${PROJECT_SOURCE_DIR}")
add_test(NAME lint.format COMMAND scripts/check-format WORKING_DIRECTORY "${lint_folder}")
add_test(NAME lint.layers COMMAND scripts/check-layers WORKING_DIRECTORY "${lint_folder}")
if(NOT SONVEL_SANITIZE)
  add_test(NAME lint.tidy COMMAND scripts/check-tidy "${PROJECT_BINARY_DIR}" WORKING_DIRECTORY "${lint_folder}")
  set_tests_properties(lint.tidy PROPERTIES TIMEOUT 3000 COST 1000)
endif()
set_property(TEST lint.format lint.layers APPEND PROPERTY LABELS lint)
