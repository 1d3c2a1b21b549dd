# Completion of kelvanectl's commands, their words and the settings' names for bash.
_kelvanectl()
{
    local cur prev words cword
    _init_completion || return

    local commands="state open close hide select calibrate settings show-settings activities calendar notes todo apps mirror effects shortcuts timer tray media quit"
    local settings="intro lastVersionNumber preferredOpenMode autoOpenTrayWithFiles rememberLastOpenTab defaultMirrorDevice mirrorCameraInputWhenAvail generalSettings gestureControlSettings liveActivitiesSettings mediaLiveActivitySettings calendarLiveActivitySettings batteryLiveActivitySettings tuckleSettings traySettings dropAreaSettings mediaWidgetSettings calendarWidgetSettings shortcutsWidgetSettings mirrorWidgetSettings notesWidgetSettings todoListWidgetSettings quickAppsWidgetSettings timerWidgetSettings liquidBasicSettings liquidGlassSettings"

    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W "$commands --version --help" -- "$cur"))
        return
    fi
    if [[ $prev == --screen ]]; then
        return
    fi
    local command=${words[1]}
    if [[ $cword -eq 2 ]]; then
        case $command in
            open) COMPREPLY=($(compgen -W "tuckle tray --screen" -- "$cur")) ;;
            close|hide) COMPREPLY=($(compgen -W "--screen" -- "$cur")) ;;
            select) COMPREPLY=($(compgen -W "tuckle tray" -- "$cur")) ;;
            calibrate) COMPREPLY=($(compgen -W "width height done" -- "$cur")) ;;
            settings) COMPREPLY=($(compgen -W "list get set reset" -- "$cur")) ;;
            show-settings) COMPREPLY=($(compgen -W "general liquid gestures tuckle tray dropArea liveActivities about" -- "$cur")) ;;
            calendar) COMPREPLY=($(compgen -W "sources" -- "$cur")) ;;
            notes) COMPREPLY=($(compgen -W "list show add remove" -- "$cur")) ;;
            todo) COMPREPLY=($(compgen -W "list add done undo remove" -- "$cur")) ;;
            apps) COMPREPLY=($(compgen -W "list add remove" -- "$cur")) ;;
            shortcuts) COMPREPLY=($(compgen -W "list run stop" -- "$cur")) ;;
            timer) COMPREPLY=($(compgen -W "add list pause resume cancel" -- "$cur")) ;;
            tray) COMPREPLY=($(compgen -W "add list remove paste" -- "$cur")) ;;
            media) COMPREPLY=($(compgen -W "play-pause next previous pause-and-dismiss pin unpin" -- "$cur")) ;;
        esac
        return
    fi
    case "$command ${words[2]}" in
        "settings get"|"settings set")
            [[ $cword -eq 3 ]] && COMPREPLY=($(compgen -W "$settings" -- "$cur")) ;;
        "calendar sources")
            if [[ $cword -eq 3 ]]; then
                COMPREPLY=($(compgen -W "add remove" -- "$cur"))
            else
                _filedir
            fi ;;
        "tray add"|"shortcuts run")
            _filedir ;;
        open*|close*|hide*|select*|calibrate*)
            COMPREPLY=($(compgen -W "--screen" -- "$cur")) ;;
    esac
} &&
    complete -F _kelvanectl kelvanectl
