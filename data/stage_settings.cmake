# Puts the settings file INPUT into the work folder as OUTPUT, with @HOME@ and @QUARN_STAGE_DIR@
# filled in. What was put there is remembered in PRISTINE: an OUTPUT that differs from it was
# edited by the user and is left alone.

set(HOME "$ENV{HOME}")
if(HOME STREQUAL "")
  set(HOME "/")
endif()

configure_file("${INPUT}" "${PRISTINE}.new" @ONLY)

# same(a b result): whether both files exist and have the same content.
function(same a b result)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E compare_files "${a}" "${b}"
    RESULT_VARIABLE status
    OUTPUT_QUIET ERROR_QUIET)
  if(status EQUAL 0)
    set(${result} TRUE PARENT_SCOPE)
  else()
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

same("${OUTPUT}" "${PRISTINE}" unedited)
same("${OUTPUT}" "${PRISTINE}.new" current)

if(EXISTS "${OUTPUT}" AND NOT unedited AND NOT current)
  message(STATUS "Kept ${OUTPUT}")
else()
  get_filename_component(folder "${OUTPUT}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  file(COPY_FILE "${PRISTINE}.new" "${OUTPUT}" ONLY_IF_DIFFERENT)
  file(COPY_FILE "${PRISTINE}.new" "${PRISTINE}" ONLY_IF_DIFFERENT)
endif()
file(REMOVE "${PRISTINE}.new")
