# Do sources and catalogues agree? lupdate brings copies of the catalogues up to date; whatever it finds new or gone is a
# fault. Those of SoftwareUpdateClient have 48 texts; what policies add stands in src/trust/ and onvif/, and in
# catalogues of its own.
#   cmake -DLUPDATE=PROGRAM -DSOURCES=src -DSCRATCH=FOLDER -P scripts/check-translations.cmake
# To mend the catalogues:
#   lupdate -locations none src/{catalogue,client,dialogs,manager} -ts src/translations/SoftwareUpdateClient_*.ts
#   lupdate -locations none src/trust onvif -ts src/translations/SoftwareUpdatePolicy_*.ts
cmake_minimum_required(VERSION 3.22)
set(expected 48)
set(roomsOfSoftwareUpdateClient ${SOURCES}/catalogue ${SOURCES}/client ${SOURCES}/dialogs ${SOURCES}/manager)
set(roomsOfSoftwareUpdatePolicy ${SOURCES}/trust ${SOURCES}/../onvif)

file(REMOVE_RECURSE ${SCRATCH})
foreach(texts SoftwareUpdateClient SoftwareUpdatePolicy)
    foreach(language de_DE fr_FR)
        set(name ${texts}_${language}.ts)
        file(COPY ${SOURCES}/translations/${name} DESTINATION ${SCRATCH})
        execute_process(COMMAND ${LUPDATE} -silent -locations none ${roomsOf${texts}} -ts ${SCRATCH}/${name}
            COMMAND_ERROR_IS_FATAL ANY)
        file(READ ${SCRATCH}/${name} catalogue)

        string(REGEX MATCHALL "<source>[^<]*</source>[^<]*<translation type=\"[a-z]+\"" faults "${catalogue}")
        if(faults)
            message(SEND_ERROR "${name}, texts that are new in the sources (unfinished) or gone (vanished):\n${faults}")
        endif()
        string(REGEX MATCHALL "<message>" messages "${catalogue}")
        list(LENGTH messages count)
        if(texts STREQUAL SoftwareUpdateClient AND NOT count EQUAL expected)
            message(SEND_ERROR "${name} has ${count} texts instead of ${expected}")
        endif()
    endforeach()
endforeach()
