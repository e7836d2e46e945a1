# Each command has a manual page that tells all options of its help, and bash completes commands, options and words.
# Takes the prefix of the installed tree.
set -euo pipefail
prefix=$1
. "$prefix/share/bash-completion/completions/zel"
test -s "$prefix/share/zsh/site-functions/_zel"

compopt() { :; }  # bash knows it only while it completes
# expect WORDS ANSWER: what completes the last of the words.
expect() {
    read -ra COMP_WORDS <<<"$1."
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_WORDS[-1]=${COMP_WORDS[-1]%.} COMPREPLY=()
    _zel || true
    [ "${COMPREPLY[*]:-}" = "$2" ] || { echo "'$1' is completed by '${COMPREPLY[*]:-}'"; exit 1; }
}
expect "zel med" median-filter
expect "zel erosion --neigh" --neighborhood
expect "zel erosion a.png --neighborhood " "square diamond"
expect "zel erosion --neighborhood = d" diamond
expect "zel convert --type float" "float32 float64"
expect "zel template-matching --mask f" ""

for command in $("$prefix/bin/zel" --help | sed -n '/^Subcommands/,$ s/^  \([a-z-]*\) .*/\1/p'); do
    expect "zel $command" "$command"
    page=$(sed 's/\\//g' "$prefix/share/man/man1/zel-$command.1")
    for option in $("$prefix/bin/zel" "$command" --help | sed -n 's/^  \(-h,\)\{0,1\}\(--[a-z-]*\).*/\2/p'); do
        [[ $page == *"fB${option}fR"* ]] || { echo "zel-$command.1 has no $option"; exit 1; }
    done
done
[ "$option" = --json ] || { echo "there are no commands"; exit 1; }
