# Gives the headings of a page the names by which its links call them. The pages of another reader are named only.
/^##? / && !code {
    name = tolower($0)
    gsub(/^#+ /, "", name)
    gsub(/[^a-z0-9 -]/, "", name)
    gsub(/ /, "-", name)
    $0 = $0 " {#" name "}"
}
/^```/ { code = !code }
{ gsub(/\[catalogue.md\]\(catalogue.md\)/, "docs/catalogue.md") }
{ gsub(/\[servers.md\]\(servers.md\)/, "docs/servers.md"); print }
