# Reads gcov's output, "count:line:text" for each line, and adds up the folders above platform/. A line that holds only a
# closing brace is left out: it stands for the clean-up after a failure.

BEGIN { FS = ":" }

$2 ~ /^ *0$/ && $3 == "Source" {
    source = $4
    wanted = source ~ /^(base|state|ui|link|startup|firmware|transfer|app)\//
    next
}

wanted && $1 !~ /^ *-$/ && $2 ~ /^ *[0-9]+$/ {
    code = substr($0, length($1) + length($2) + 3)
    if (code ~ /^ *}[;)]*$/) {
        next
    }
    line = source ":" ($2 + 0)
    reached[line] = reached[line] || $1 !~ /#####|=====/
    text[line] = code
}

END {
    for (line in reached) {
        folder = substr(line, 1, index(line, "/") - 1)
        all[folder]++
        hit[folder] += reached[line]
        if (!reached[line]) {
            print "  " line ":" text[line] | "sort -t: -k1,1 -k2,2n"
        }
    }
    close("sort -t: -k1,1 -k2,2n")
    row = "%-10s %5d of %5d lines reached, %6.2f %%\n"
    for (folder in all) {
        printf row, folder, hit[folder], all[folder], 100 * hit[folder] / all[folder] | "sort"
        lines += all[folder]
        hits += hit[folder]
    }
    close("sort")
    printf row, "together", hits, lines, 100 * hits / lines
}
