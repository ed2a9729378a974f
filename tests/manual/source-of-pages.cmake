# The C++ of the pages as one source, so that a compiler reads it; what it finds is told by page and line.
#   cmake -DPAGES="docs/hosts.md;README.md" -DSOURCE=pages.cpp -P source-of-pages.cmake
# The first block is a whole program and stands before the preamble, with its own headers alone. Classes and functions
# stand as they are, all else inside a function. A block after the line "<!-- Qt 6 -->" is for Qt 6 alone.
cmake_minimum_required(VERSION 3.22)

function(add_lines_of text number) # to the NUMBER of a line
    string(REGEX REPLACE "[^\n]" "" text "${text}")
    string(LENGTH "${text}" count)
    math(EXPR sum "${${number}} + ${count}")
    set(${number} ${sum} PARENT_SCOPE)
endfunction()

set(source "")
foreach(page ${PAGES})
    file(READ ${page} text)
    set(line 1) # on which the text begins
    string(FIND "${text}" "```cpp\n" begin)
    if(begin EQUAL -1)
        message(FATAL_ERROR "${page}: no C++")
    endif()
    while(NOT begin EQUAL -1)
        string(SUBSTRING "${text}" 0 ${begin} before)
        math(EXPR begin "${begin} + 6")
        string(SUBSTRING "${text}" ${begin} -1 text)
        string(FIND "${text}" "```\n" end)
        string(SUBSTRING "${text}" 0 ${end} block)
        string(SUBSTRING "${text}" ${end} -1 text)
        add_lines_of("${before}" line)

        string(REGEX MATCH "^\n((//|#include)[^\n]*\n|\n)*" head "${block}")
        string(LENGTH "${head}" length)
        string(SUBSTRING "${block}" ${length} -1 body)
        set(bodyLine ${line})
        add_lines_of("${head}" bodyLine)
        set(body "#line ${bodyLine}\n${body}")
        if(NOT body MATCHES "^[^\n]*\n(class|struct|(int|void) [A-Za-z]+\\()")
            # Twice in braces: a block may make what others only use.
            set(body "void block${bodyLine}(QV_OBJECTS_OF_THE_PAGES)\n{ {\n${body}} }\n")
        endif()
        set(code "#line ${line} \"${page}\"\n${head}${body}")
        if(before MATCHES "\n<!-- Qt 6 -->\n$")
            set(code "#if QT_VERSION_MAJOR >= 6\n${code}#endif\n")
        endif()
        if(source STREQUAL "")
            string(APPEND code "#include \"preamble.h\"\n")
        endif()
        string(APPEND source "${code}")
        add_lines_of("${block}" line)
        string(FIND "${text}" "```cpp\n" begin)
    endwhile()
endforeach()
file(WRITE ${SOURCE} "${source}")
