# Sourced by the benchmarks: nginx on 127.0.0.1:80 (inside the private network namespace the
# caller runs in) serving one sparse file of the given size as /payload.bin, which costs no
# disk space. Sets nginx_pid, for the caller's clean-up.
#
#   start_payload_server WORK_DIR SIZE
start_payload_server() {
  local work="$1" size="$2"
  local nginx
  nginx=$(command -v nginx || echo /usr/sbin/nginx)
  mkdir -p "$work/www" "$work/nginx"
  truncate -s "$size" "$work/www/payload.bin"
  # Inside the namespace we are root mapped to the real user; nginx would hand its folders
  # to "nobody", who does not exist there.
  cat >"$work/nginx/nginx.conf" <<EOF
daemon off;
master_process off;
worker_processes 1;
user root root;
pid $work/nginx/nginx.pid;
error_log $work/nginx/error.log warn;
events { worker_connections 64; }
http {
  access_log off;
  default_type application/octet-stream;
  sendfile on;
  client_body_temp_path $work/nginx/body;
  proxy_temp_path $work/nginx/proxy;
  fastcgi_temp_path $work/nginx/fastcgi;
  uwsgi_temp_path $work/nginx/uwsgi;
  scgi_temp_path $work/nginx/scgi;
  server { listen 127.0.0.1:80; root $work/www; }
}
EOF
  "$nginx" -e "$work/nginx/error.log" -p "$work/nginx" -c "$work/nginx/nginx.conf" \
    >"$work/nginx/out.log" 2>&1 &
  nginx_pid=$!
  for _ in $(seq 200); do
    curl -s -o /dev/null -r 0-0 http://127.0.0.1/payload.bin && return 0
    sleep 0.05
  done
  echo "nginx did not come up:" >&2
  cat "$work/nginx/"*.log >&2
  return 1
}
