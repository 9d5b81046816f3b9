# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

# Completion for fish. What a word of tallbook's may become, the program itself knows.

function __tallbook_candidates
    set -l words (commandline -opc)
    # A quotation may be open yet.
    set -l word (commandline -ct | string replace -r '^["\']' '' | string unescape)
    set -l program (string replace -r '^~' $HOME -- $words[1])
    for answer in ($program _complete (count $words) $words "$word" 2>/dev/null)
        switch $answer
            case \tfiles
                __fish_complete_path (commandline -ct)
            case \tfolders
                __fish_complete_directories (commandline -ct)
            case '*'
                echo -- $answer
        end
    end
end

complete -c tallbook -f -k -a '(__tallbook_candidates)'
