# Completion of prismo for fish. Commands, options and formats are those that the prismo at hand lists itself.
function __prismo_command
    for word in (commandline -opc)[2..]
        string match -q -- '-*' $word; or echo $word; and return
    end
end

function __prismo_words
    set -l prismo (commandline -opc)[1]
    switch (commandline -opc)[-1]
        case --format
            $prismo formats | awk 'NR > 1 { print $1 }'
        case --demosaic
            printf '%s\n' bilinear adaptive none
        case --as
            printf '%s\n' bmp png jpg bgr bgra grey rwh raw
        case --level
            printf '%s\n' debug info warn error fatal
        case --threads
            echo caller
        case --gain
            echo auto
        case --size --rect --shift --black --gamma --quality --border --filter --rounds --min-time --misalign
        case '*'
            if string match -q -- '-*' (commandline -ct)
                $prismo (__prismo_command) --help | grep -oE -- '--[a-z][a-z-]*'
            else if test -z (__prismo_command)
                $prismo --help | awk 'commands { print $1 } /^Subcommands:/ { commands = 1 }'
            else
                __fish_complete_path (commandline -ct)
            end
    end
end

complete -c prismo -f -a '(__prismo_words)'
