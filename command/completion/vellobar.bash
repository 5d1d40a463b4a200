# Completion of vellobar for bash, made by `vellobar completion bash`. File names complete as everywhere.
_vellobar() {
  local word=${COMP_WORDS[COMP_CWORD]} verb= words i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      -*) ;;
      *) verb=${COMP_WORDS[i]}; break ;;
    esac
  done
  case $verb in
    list) words='--help --separator-lines --json --from --to --subject --since --before' ;;
    show) words='--help --headers --json --from --to --subject --since --before' ;;
    headers) words='--help --name --json --from --to --subject --since --before' ;;
    attachments) words='--help --save --scan-text --json --from --to --subject --since --before' ;;
    extract) words='--help --scan-text --json --from --to --subject --since --before' ;;
    export) words='--help --replace --from --to --subject --since --before' ;;
    add) words='--help --messages --from --to --subject --since --before' ;;
    remove) words='--help --from --to --subject --since --before' ;;
    set) words='--help --remove --set --add --from --to --subject --since --before' ;;
    check) words='--help --json --from --to --subject --since --before' ;;
    stats) words='--help --attachments --json --from --to --subject --since --before' ;;
    new) words='--help --from --to --subject --text --html --attachment' ;;
    encode) words='--base64 --qp --uu --binhex --help' ;;
    decode) words='--base64 --qp --uu --binhex --help' ;;
    completion) words='--help' ;;
    '') words='list show headers attachments extract export add remove set check stats new encode decode completion --help --version' ;;
    *) return ;;
  esac
  COMPREPLY=()
  [[ -n $verb && $word != -* ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -o bashdefault -F _vellobar vellobar
