# A picture of a long run. usage: gnuplot -e "folder='build/soak'" scripts/soak/plot.gnuplot
set terminal png size 1000,1100 noenhanced font "sans,10" background "#ffffff"
set output folder . "/soak.png"
samples = folder . "/samples"
events = folder . "/events"
stats samples using 1 skip 1 nooutput
unit = STATS_max > 600 ? 60.0 : 1.0
set xrange [0:STATS_max / unit]
set lmargin 16
set rmargin 3
set bmargin 2
set tmargin 2
set grid ytics linecolor "#dddddd"
set key outside top right horizontal samplen 1
set border 3
set tics nomirror out
set yrange [0:*]
set multiplot layout 5,1
set ylabel "KiB"
plot samples using ($1/unit):4 skip 1 with lines linecolor "#1f6fb4" title "own memory"
set ylabel ""
plot samples using ($1/unit):5 skip 1 with lines linecolor "#2a8f4d" title "descriptors", \
     samples using ($1/unit):6 skip 1 with lines linecolor "#c0392b" title "threads"
set ylabel "a second"
plot samples using ($1/unit):7 skip 1 with lines linecolor "#8e5bb5" title "wake-ups", \
     samples using ($1/unit):9 skip 1 with lines linecolor "#e08a1e" title "readings published"
set ylabel "ms a second"
plot samples using ($1/unit):8 skip 1 with lines linecolor "#555555" title "processor"
set ylabel ""
set xlabel unit == 60 ? "minutes" : "seconds"
set bmargin 3
kinds = "unplugged noise line_stalled broker_away reloaded wrong_settings log_moved clock_put signals frozen looked_in half_a_request killed"
set ytics ()
do for [i = 1:words(kinds)] { set ytics add (system("echo " . word(kinds, i) . " | tr _ ' '") i) }
set yrange [0:words(kinds) + 1]
unset key
plot for [i = 1:words(kinds)] "< sed 's/ /_/2g' " . events using \
  (strcol(2) eq word(kinds, i) ? $1/unit : NaN):(i) with points pointtype 7 pointsize (unit == 60 ? 0.3 : 0.7) linecolor i
unset multiplot
