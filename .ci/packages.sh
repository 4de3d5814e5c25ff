# Sourced by the scripts of .ci/. install_missing installs, with apt-get,
# the Debian packages of the tools that this machine lacks. Each argument is
# TOOL=PACKAGE, TOOL being a command name or, beginning with '/', a file.
install_missing() {
  local need=() pair tool
  for pair in "$@"; do
    tool=${pair%%=*}
    if [[ $tool == /* ]]; then
      [ -e "$tool" ] || need+=("${pair#*=}")
    else
      command -v "$tool" >/dev/null || need+=("${pair#*=}")
    fi
  done
  [ ${#need[@]} -gt 0 ] || return 0
  local sudo=
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  echo "installing: ${need[*]}"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${need[@]}"
}
