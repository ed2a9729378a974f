# Gives the headings of a page the names by which its links call them. The page of another reader is named only.
/^##? / && !code {
    name = tolower($0)
    gsub(/^#+ /, "", name)
    gsub(/[^a-z0-9 -]/, "", name)
    gsub(/ /, "-", name)
    $0 = $0 " {#" name "}"
}
/^```/ { code = !code }
{ gsub(/\[catalogue.md\]\(catalogue.md\)/, "docs/catalogue.md"); print }
