# Makes the binary opening book from the text book through the engine's own importer:
#   cmake -D ENGINE=... -D TEXT=... -D BOOK=... -P MakeBook.cmake
# The values of the text are taken as they are; moves without one are left out.

cmake_path(GET BOOK PARENT_PATH folder)
set(home "${folder}/book-home")  # where no settings.ini lies about
file(MAKE_DIRECTORY "${home}")
file(WRITE "${home}/dialog.txt"
    "console\nimportbook ${TEXT}\na\nb\nc\nd\ne\nf\ng\n0\n0\n1\nwritebook ${BOOK}\nquit\n")
execute_process(COMMAND "${ENGINE}" WORKING_DIRECTORY "${home}" INPUT_FILE "${home}/dialog.txt"
    OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT output MATCHES "\\.\\.\\.done!")
    message(FATAL_ERROR "the opening book could not be made:\n${output}")
endif()
