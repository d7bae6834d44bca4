ozone <- read.csv("data/airquality.csv")$Ozone; x <- log(ozone)
shapiro.test(ozone)$p.value; shapiro.test(x)$p.value
svg("normal_quantiles.svg"); qqnorm(x, ylab = "log ozone"); qqline(x); dev.off()
