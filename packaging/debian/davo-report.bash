# SPDX-License-Identifier: GPL-3.0-or-later
# Completion for davo-report in bash: its options, the rules, folders, and files with ".txt" in their
# names.
_davo_report() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local options="--pdf --html --xlsx --xls --csv --summary --rule --compare --limit --out --impedance --judge
    --no-heading --force --help --version"
  if [[ $before == --rule ]]; then
    mapfile -t COMPREPLY < <(compgen -W "asa 45 30" -- "$word")
  elif [[ $before == --out ]]; then
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  elif [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.[tT][xX][tT]*' -- "$word"
      [[ $before != --compare ]] || compgen -f -X '!*.[cC][sS][vV]' -- "$word")
  fi
}
complete -o filenames -F _davo_report davo-report
