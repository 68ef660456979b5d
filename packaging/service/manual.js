// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers
//
// Prints the service's manual page, made from what its --help prints.

import { USAGE } from '../../service/src/cli/usage.js';

const escaped = (text) => text.replaceAll('\\', '\\e').replaceAll('-', '\\-').replace(/^([.'])/gm, '\\&$1');
process.stdout.write(`.TH VANTRELL\\-SERVICE 1 "" "Vantrell library"
.SH NAME
vantrell\\-service \\- library service for screen recordings
.SH DESCRIPTION
Takes the recordings that vantrell\\-capture uploads, keeps them and shows them in a web page.
The installed service runs as the user vantrell\\-library with its data in
.IR /var/lib/vantrell\\-library ;
run the other commands as that user too:
.PP
.EX
sudo \\-u vantrell\\-library vantrell\\-service sign\\-in \\-\\-data /var/lib/vantrell\\-library
.EE
.SH USAGE
.EX
${escaped(USAGE.trimEnd())}
.EE
.SH FILES
.TP
.I /etc/vantrell\\-library/service.conf
Options of the installed service.
.SH SEE ALSO
.BR vantrell\\-capture (1)
`);
