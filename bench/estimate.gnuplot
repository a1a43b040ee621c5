# Draws the table that estimate.py writes: the mean error of each method over the time that has passed.
# usage: gnuplot -e "table='TABLE'; picture='SVG'" estimate.gnuplot
set terminal svg size 760,380 font "sans-serif,12" background "white"
set output picture
set datafile missing "nan"
set xrange [0:100]
set yrange [0:100]
set xlabel "time passed, % of the run"
set ylabel "mean error of the end, % of the run"
set grid ytics lc "#dddddd"
set border 3
set tics nomirror
plot for [i=1:5] table using 1:i+1 with linespoints lw 2 pt 7 ps 0.4 lc rgb word("#c05020 #c0a020 #2060a0 #208040 #803080", i) \
    title word("linear smoothed exact adaptive 'with amounts'", i)
