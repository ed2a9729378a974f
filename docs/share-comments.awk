# In the headers one comment stands above several declarations that belong together, up to the next blank line. Doxygen
# gives it to the first alone, unless they are a group. This marks such groups, on the lines around them.
{ line[NR] = $0 }

END {
    for (i = 2; i <= NR; ++i) {
        if (line[i] !~ /^    \/\/\/ / || line[i - 1] ~ /^    \/\/\//)
            continue
        declarations = 0
        for (end = i; line[end] !~ /^ *$|^}|^[a-z ]*:$/; ++end)
            declarations += line[end] ~ /^    [A-Za-z]/
        if (declarations > 1) {
            line[i - 1] = line[i - 1] " /**@{*/"
            line[end] = "/**@}*/ " line[end]
        }
    }
    for (i = 1; i <= NR; ++i)
        print line[i]
}
