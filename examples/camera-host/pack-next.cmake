# Packs the folder of the demo's next version into a zip and writes the catalogue that offers it.
#   cmake -DFOLDER=... -DVERSION=... -DCATALOGUE=... -P pack-next.cmake
# The zip gets the catalogue's name and place.
set(version ${VERSION})
get_filename_component(name ${CATALOGUE} NAME_WE)
get_filename_component(target ${CATALOGUE} DIRECTORY)
set(archive ${name}-${VERSION}.zip)

file(GLOB files RELATIVE ${FOLDER} ${FOLDER}/*)
execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${target}/${archive} --format=zip ${files}
    WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${target}/${archive} size)
file(SHA256 ${target}/${archive} sha256)
configure_file(${CMAKE_CURRENT_LIST_DIR}/next.xml.in ${CATALOGUE} @ONLY)
