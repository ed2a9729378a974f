# Packs the folder of the demo's next version into a zip, and writes a catalogue that offers it beside the site's.
#   cmake -DFOLDER=... -DVERSION=... -DCATALOGUE=... -P pack-next.cmake
# The zip gets a folder beside the catalogue.
get_filename_component(target ${CATALOGUE} DIRECTORY)
set(archive camera-host-${VERSION}.zip)
file(MAKE_DIRECTORY ${target}/packages)

file(GLOB files RELATIVE ${FOLDER} ${FOLDER}/*)
execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${target}/packages/${archive} --format=zip ${files}
    WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${target}/packages/${archive} size)
file(SHA256 ${target}/packages/${archive} sha256)

file(READ ${CMAKE_CURRENT_LIST_DIR}/site/catalogue.xml catalogue)
string(REPLACE "</softwareList>" "  <package type=\"Application\" name=\"Camera Host\"
    release=\"${VERSION}\" status=\"STABLE\">
    <file url=\"${archive}\" file-size=\"${size}\" release-date=\"2026-11-20\" sha256=\"${sha256}\"/>
  </package>
</softwareList>" catalogue "${catalogue}")
file(WRITE ${CATALOGUE} "${catalogue}")
