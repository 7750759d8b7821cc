# fish completion for tscript. The program itself says what the last word can be.

function __tscript_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in (tscript __complete $words[2..-1] 2>/dev/null)
        switch $line
            case ':files*'
                __fish_complete_path (commandline -ct)
            case ':folders*'
                __fish_complete_directories (commandline -ct)
            case '*'
                echo $line
        end
    end
end

complete -c tscript -f -a '(__tscript_complete)'
