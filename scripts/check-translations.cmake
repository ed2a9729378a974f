# Do sources and catalogues agree? lupdate brings copies of the catalogues up to date; whatever it finds new or gone is a
# fault, and so is any number of texts but 48.
#   cmake -DLUPDATE=PROGRAM -DSOURCES=src -DSCRATCH=FOLDER -P scripts/check-translations.cmake
# To mend the catalogues:  lupdate -locations none src -ts src/translations/*.ts
cmake_minimum_required(VERSION 3.22)
set(expected 48)

file(REMOVE_RECURSE ${SCRATCH})
foreach(language de_DE fr_FR)
    set(name SoftwareUpdateClient_${language}.ts)
    file(COPY ${SOURCES}/translations/${name} DESTINATION ${SCRATCH})
    execute_process(COMMAND ${LUPDATE} -silent -locations none ${SOURCES} -ts ${SCRATCH}/${name} COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${SCRATCH}/${name} catalogue)

    string(REGEX MATCHALL "<source>[^<]*</source>[^<]*<translation type=\"[a-z]+\"" faults "${catalogue}")
    if(faults)
        message(SEND_ERROR "${name}, texts that are new in the sources (unfinished) or gone (vanished):\n${faults}")
    endif()
    string(REGEX MATCHALL "<message>" messages "${catalogue}")
    list(LENGTH messages count)
    if(NOT count EQUAL expected)
        message(SEND_ERROR "${name} has ${count} texts instead of ${expected}")
    endif()
endforeach()
