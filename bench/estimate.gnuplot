# Draws the table that replay writes: mean error of both estimates over the three runs of each job.
# usage: gnuplot -e "table='TABLE'; picture='SVG'" estimate.gnuplot
set terminal svg size 900,340 font "sans-serif,12" background "white"
set output picture
set datafile missing "-"
set multiplot layout 1,3
set xrange [0:100]
set yrange [0:100]
set xlabel "time passed, % of the run"
set grid ytics lc "#dddddd"
set border 3
set tics nomirror
set key top right
bin(x) = 5 * floor((x - 0.001) / 5) + 2.5
jobs = "archive build copy"
do for [i=1:3] {
    set title word(jobs, i)
    set ylabel i == 1 ? "mean error, % of the run's duration" : ""
    plot table index i-1 using (bin($3)):5 smooth unique with linespoints lw 2 pt 7 ps 0.4 lc "#c05020" title "linear", \
         table index i-1 using (bin($3)):4 smooth unique with linespoints lw 2 pt 7 ps 0.4 lc "#2060a0" title "learned"
}
unset multiplot
