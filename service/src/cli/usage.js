// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

export const USAGE = `Usage:
  vantrell-service serve --data DIR [options]
      --host ADDRESS             address to listen on (default 127.0.0.1)
      --port N                   port, 0 for any free one (default 8787)
      --public-url URL           where people reach it, when that is not where it listens
      --tls-cert F --tls-key F   serve HTTPS
      --owner-password-file F    ask for this password on the pages; required beyond this machine
                                 (or VANTRELL_OWNER_PASSWORD)
      --max-upload-bytes N       largest recording (default: no limit)
      --max-duration-ms N        longest recording (default 12 hours)
      --transfer auto|standard|tus, --put-threshold N, --chunk-size N
                                 how recordings are sent: up to the threshold in one request,
                                 larger ones resumably in chunks (default 6 MiB each)
      --quiet                    log failures only
      --test-mode                control endpoints for tests, with a key that is printed at the start
      --discard                  count uploaded bytes instead of keeping them
  vantrell-service sign-in --data DIR [--page PATH]         prints an address that signs one browser in
  vantrell-service key create --data DIR [--name NAME]      prints the new key
  vantrell-service key list --data DIR
  vantrell-service key revoke --data DIR KEY-OR-ID
  vantrell-service project create --data DIR NAME           prints the new project's id
  vantrell-service project list --data DIR
  vantrell-service project delete --data DIR ID
`;

/** The command line was wrong; the text says how. */
export class UsageError extends Error {}
