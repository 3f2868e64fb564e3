# Converts CHANGELOG.md into a Debian changelog.
/^## / {
    finish_entry()
    version = $2
    date = substr($3, 2, 10)
    printf "vantrel (%s) unstable; urgency=medium\n\n", version
    next
}
version != "" && NF > 0 {
    sub(/^- /, "* ")
    print "  " $0
}
END {
    finish_entry()
}

function finish_entry(    command, rfc_date) {
    if (version == "")
        return
    command = "LC_ALL=C date --utc --rfc-email --date=" date
    command | getline rfc_date
    printf "\n -- %s  %s\n\n", maintainer, rfc_date
}
