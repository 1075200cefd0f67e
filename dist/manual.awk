# SPDX-License-Identifier: Apache-2.0
# Makes a manual page, so that what it tells stands in one place: of a configuration whose comments tell what each
# setting means, or of docs/nodes.md.
# usage: awk -v title="HOST.JSON 5" -v name="host.json \\- ..." -v more=".BR x (8)" -f manual.awk FILE

# Words for roff: code between backquotes is bold, a link is its words.
function words(text,   done, at, end) {
    gsub(/\\\|/, "|", text)
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    while (match(text, /\[[^]]*\]\(#[^)]*\)/)) {
        at = RSTART; end = RLENGTH
        done = substr(text, at + 1, index(substr(text, at), "]") - 2)
        text = substr(text, 1, at - 1) done substr(text, at + end)
    }
    while (match(text, /`[^`]*`/))
        text = substr(text, 1, RSTART - 1) "\\fB" substr(text, RSTART + 1, RLENGTH - 2) "\\fP" substr(text, RSTART + RLENGTH)
    return text ~ /^[.']/ ? "\\&" text : text
}

function code(is) {
    if (is != inCode)
        print is ? ".PP\n.RS 4\n.EX" : ".EE\n.RE\n.PP"
    inCode = is
}

function row(line,   cells, count, i) {
    gsub(/\\\|/, "\001", line)
    count = split(substr(line, 3, length(line) - 4), cells, / \| /)
    for (i = 1; i <= count; i++)
        gsub("\001", "|", cells[i])
    if (isHeading) {
        for (i = 1; i <= count; i++)
            heading[i] = cells[i]
        isHeading = 0
        return
    }
    if (cells[1] ~ /^-+$/)
        return
    print ".TP\n" words(cells[1])
    for (i = 2; i < count; i++)
        if (cells[i] != "")
            print "(" heading[i] ": " words(cells[i]) ")"
    print words(cells[count])
}

BEGIN {
    split(title, head, " ")
    print ".TH " head[1] " " head[2] " \"\" \"orva-networking\"\n.SH NAME\n" name "\n.SH DESCRIPTION"
}

isPage = isPage || (NR == 1 && /^# /) { # a page of Markdown
    if (/^# / || /made by `tools/)
        next
    if (/^## /)
        print ".SH " toupper(substr($0, 4))
    else if (/^### /)
        print ".SS " substr($0, 5)
    else if (/^\|/)
        row($0)
    else if (/^$/)
        print ".PP"
    else
        print words($0)
    isHeading = !/^\|/
    next
}

/^\/\/ SPDX-/ {
    next
}

{ # a commented configuration
    if (match($0, /^ *\/\/ ?/)) {
        code(0)
        print words(substr($0, RLENGTH + 1))
    } else if (/^$/)
        next
    else {
        code(1)
        gsub(/\\/, "\\e")
        gsub(/-/, "\\-")
        print
    }
}

END {
    code(0)
    print ".SH SEE ALSO\n" more
}
